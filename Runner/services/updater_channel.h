#pragma once

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// Serves "cn.kestrio.norvane.updater". Main thread.
void handleUpdater(const FlutterMethodCall& call, FlutterResult result);

}  // namespace norvane
