#pragma once

#include <cstdint>

namespace norvane {

/// The X server time, in milliseconds, of the person's last event that this application was given.
/// Window managers ask for it before they hand a window the keyboard. The toolkit keeps that of
/// events in the windows; what comes another way (a hotkey, an activation) is told. Main thread.
class EventTime {
 public:
  /// 0 for one that has just happened and came without a time.
  void set(std::uint32_t time);
  /// The server's own time when there was no event yet.
  std::uint32_t last() const;

 private:
  std::uint32_t last_ = 0;
};

}  // namespace norvane
