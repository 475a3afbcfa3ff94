#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contract.h"  // ahead of Xlib, whose macros it cannot bear

struct _XDisplay;

namespace norvane {

/// What another program writes while the main loop turns; nothing when it fails.
std::optional<std::string> outputOf(std::vector<const char*> command);

/// Another application on the same display: a connection of its own to the X server, and the
/// person's keyboard and mouse, by XTest.
class OtherClient {
 public:
  OtherClient();
  ~OtherClient();
  OtherClient(const OtherClient&) = delete;

  _XDisplay* display() const { return display_; }
  /// Holds the modifier keys down, presses and releases the key, then lets them go. X key codes of
  /// an evdev keyboard.
  void press(unsigned keyCode, const std::vector<unsigned>& modifierKeys = {});
  void key(unsigned keyCode, bool down);

 private:
  _XDisplay* display_;
};

}  // namespace norvane
