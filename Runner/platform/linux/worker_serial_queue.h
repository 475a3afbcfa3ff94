#pragma once

#include <memory>

#include "platform/serial_queue.h"

namespace norvane {

class GlibDispatch;

/// A serial queue on the workers of a dispatch. No task begins once they end.
class WorkerSerialQueue : public SerialQueue {
 public:
  explicit WorkerSerialQueue(GlibDispatch& dispatch);

  void async(Task task) override;
  void sync(const std::function<void()>& task) override;

 private:
  struct State;

  std::shared_ptr<State> state_;  // shared with the tasks under way, which may outlive the queue
};

}  // namespace norvane
