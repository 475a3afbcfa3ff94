#include "services/secure_input_channel.h"

#include <algorithm>
#include <utility>

#include "platform/keyboard_input.h"
#include "platform/platform.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

void enable(MainFlutterWindow& window) {
  KeyboardInput& keyboard = platform().keyboardInput;
  if (window.secureInputRefCount == 0) {
    window.savedInputSource = keyboard.TISCopyCurrentKeyboardInputSource();
    if (const auto ascii = keyboard.TISCopyCurrentASCIICapableKeyboardInputSource()) {
      keyboard.TISSelectInputSource(*ascii);
    }
    keyboard.EnableSecureEventInput();
  }
  ++window.secureInputRefCount;
}

void disable(MainFlutterWindow& window) {
  KeyboardInput& keyboard = platform().keyboardInput;
  const std::int64_t left = window.secureInputRefCount - 1;
  window.secureInputRefCount = std::max<std::int64_t>(left, 0);
  if (left > 0) return;
  // Also without an "enable" before it: secure entry must never stay on by mistake.
  keyboard.DisableSecureEventInput();
  if (const auto saved = std::exchange(window.savedInputSource, nullptr)) {
    keyboard.TISSelectInputSource(*saved);
  }
}

}  // namespace

FlutterMethodChannel::Handler secureInputHandler(std::weak_ptr<MainFlutterWindow> weakWindow) {
  return [weakWindow = std::move(weakWindow)](const FlutterMethodCall& call, FlutterResult result) {
    if (const auto window = weakWindow.lock()) {
      if (call.method() == "enable") {
        enable(*window);
      } else if (call.method() == "disable") {
        disable(*window);
      } else {
        result(FlutterMethodNotImplemented);
        return;
      }
    }
    result(nullptr);
  };
}

}  // namespace norvane
