#pragma once

#include "platform/flutter/flutter_view_controller.h"

namespace norvane {

/// Attaches the UI toolkit's plugins to the engine behind `registry`. Main thread, once an engine.
void RegisterGeneratedPlugins(FlutterPluginRegistry& registry);

}  // namespace norvane
