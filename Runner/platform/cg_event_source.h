#pragma once

#include <cstdint>

namespace norvane {

using CGEventType = std::uint32_t;
inline constexpr CGEventType kCGEventLeftMouseDown = 1;
inline constexpr CGEventType kCGEventRightMouseDown = 3;
inline constexpr CGEventType kCGEventMouseMoved = 5;
inline constexpr CGEventType kCGEventLeftMouseDragged = 6;
inline constexpr CGEventType kCGEventRightMouseDragged = 7;
inline constexpr CGEventType kCGEventKeyDown = 10;
inline constexpr CGEventType kCGEventScrollWheel = 22;
inline constexpr CGEventType kCGEventOtherMouseDown = 25;

/// The input of the session, whichever application it goes to. Main thread.
class CGEventSource {
 public:
  virtual ~CGEventSource() = default;
  /// Seconds since the last event of that type, never negative; a desktop that cannot tell types
  /// apart has one answer for all. What the desktop does not know is counted from the application's
  /// own last input or its start: rather too long than too short. May wait a moment for the
  /// desktop.
  virtual double secondsSinceLastEventType(CGEventType type) const = 0;
};

}  // namespace norvane
