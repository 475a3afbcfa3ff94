#pragma once

#include <functional>

#include "base/unique_function.h"

namespace norvane {

/// Runs its tasks on worker threads, one after another, in the order of their submission. Tasks
/// that were submitted run also when the queue object is gone; a quit drops those that have not
/// begun. One that throws is reported as a fault, and the next one runs.
class SerialQueue {
 public:
  virtual ~SerialQueue() = default;

  /// Any thread; returns without waiting. Throws when memory or threads have run out; `task` then
  /// never runs.
  virtual void async(Task task) = 0;

  /// Waits until the tasks submitted before have finished, then runs `task` here before any that is
  /// submitted later; what it throws passes through. Main thread, which is not held up for long:
  /// tasks that wait for other processes then share one limit of time. Inside `task` only other
  /// queues may be waited for.
  virtual void sync(const std::function<void()>& task) = 0;
};

}  // namespace norvane
