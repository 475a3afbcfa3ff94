#pragma once

#include <memory>

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

class MainFlutterWindow;

/// Serves "cn.kestrio.norvane.secure_input": secure keyboard entry for as long as the UI asks for
/// it, nested requests counted in the window. Main thread.
FlutterMethodChannel::Handler secureInputHandler(std::weak_ptr<MainFlutterWindow> window);

}  // namespace norvane
