#pragma once

#include <functional>

union _XEvent;

namespace norvane {

/// Shows each X event of this application to a function before the toolkit has it, for as long as
/// this lives. Main thread.
class X11EventFilter {
 public:
  /// `take` returns true when the toolkit is not to have the event.
  explicit X11EventFilter(std::function<bool(const _XEvent& event)> take);
  ~X11EventFilter();
  X11EventFilter(const X11EventFilter&) = delete;

 private:
  std::function<bool(const _XEvent& event)> take_;
};

/// The type of an event of the input extension, in which the toolkit gets input; 0 for others.
int inputEventType(const _XEvent& event);

}  // namespace norvane
