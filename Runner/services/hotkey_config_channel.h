#pragma once

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// Serves "cn.kestrio.norvane.hotkey.config": the UI sets the hotkey's choice and reads what is
/// registered. Main thread.
void handleHotkeyConfig(const FlutterMethodCall& call, FlutterResult result);

}  // namespace norvane
