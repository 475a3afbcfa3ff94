#pragma once

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// Serves "cn.kestrio.norvane.system_idle": the time since the user's last input. Main thread.
void handleSystemIdle(const FlutterMethodCall& call, FlutterResult result);

}  // namespace norvane
