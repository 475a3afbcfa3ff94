#pragma once

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// Serves "cn.kestrio.norvane.launch_at_login". Main thread.
void handleLaunchAtLogin(const FlutterMethodCall& call, FlutterResult result);

}  // namespace norvane
