#pragma once

#include <memory>

#include "base/unique_function.h"
#include "platform/serial_queue.h"

namespace norvane {

/// The queues of the process. Every call may be made on any thread and returns without waiting. A
/// task that throws is reported as a fault and holds nobody up. A quit drops what has not begun.
class Dispatch {
 public:
  virtual ~Dispatch() = default;

  /// Runs `task` on the main thread, in a turn of its own, after the tasks submitted before it.
  /// Throws std::bad_alloc when memory has run out; `task` then never runs.
  virtual void mainAsync(Task task) = 0;

  /// Submits `task` to the main queue once `seconds` have passed, 0 or more, to the millisecond.
  /// Tasks of about the same moment may come in any order.
  virtual void mainAfter(double seconds, Task task) = 0;

  /// A queue whose tasks run one after another on worker threads, at the priority of work that the
  /// user waits for; those of several queues run side by side. Not to be used once the dispatch
  /// is gone.
  virtual std::shared_ptr<SerialQueue> makeSerialQueue() = 0;

  /// Whether the caller is on the thread that runs the main queue, which never changes.
  virtual bool isMainThread() const = 0;
};

/// Ends the process, in every build, when `operation` is not called on the main thread.
void requireMainThread(const char* operation);

}  // namespace norvane
