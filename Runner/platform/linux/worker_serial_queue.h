#pragma once

#include <memory>

#include "platform/dispatch.h"
#include "platform/serial_queue.h"

namespace norvane {

/// A serial queue on the workers of a dispatch.
class WorkerSerialQueue : public SerialQueue {
 public:
  explicit WorkerSerialQueue(Dispatch& dispatch);

  void async(Task task) override;
  void sync(const std::function<void()>& task) override;

 private:
  struct State;

  std::shared_ptr<State> state_;  // shared with the tasks under way, which may outlive the queue
};

}  // namespace norvane
