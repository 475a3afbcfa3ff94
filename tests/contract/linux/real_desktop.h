#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>  // ahead of Xlib, whose macros it cannot bear

struct _XDisplay;

namespace norvane {

/// Turns the main loop until `condition` holds; false after ten seconds, which no healthy run
/// takes.
bool await(const std::function<bool()>& condition);

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
  void press(unsigned keyCode, std::initializer_list<unsigned> modifierKeys = {});
  void key(unsigned keyCode, bool down);

 private:
  _XDisplay* display_;
};

}  // namespace norvane
