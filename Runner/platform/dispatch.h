#pragma once

#include <memory>

#include "base/unique_function.h"
#include "platform/serial_queue.h"

namespace norvane {

/// The queues of the process. Every call may be made on any thread and returns without waiting.
class Dispatch {
 public:
  virtual ~Dispatch() = default;

  /// Runs `task` on the main thread, in a turn of its own, after the tasks submitted before it.
  virtual void mainAsync(Task task) = 0;

  /// Submits `task` to the main queue once `seconds` have passed.
  virtual void mainAfter(double seconds, Task task) = 0;

  /// A queue whose tasks run one after another on worker threads, at the priority of work that the
  /// user waits for; those of several queues run side by side.
  virtual std::shared_ptr<SerialQueue> makeSerialQueue() = 0;

  virtual bool isMainThread() const = 0;
};

/// Ends the process, in every build, when `operation` is not called on the main thread.
void requireMainThread(const char* operation);

}  // namespace norvane
