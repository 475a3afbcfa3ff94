#pragma once

#include <deque>
#include <map>
#include <utility>

#include "platform/dispatch.h"
#include "platform/log.h"

namespace norvane {

/// Queues whose time is virtual and whose work runs when the test says so, all on one thread: while
/// a worker's task runs, this is not the main thread.
class VirtualDispatch : public Dispatch {
 public:
  void mainAsync(Task task) override { mainTasks_.push_back(std::move(task)); }
  void mainAfter(double seconds, Task task) override {
    delayed_.emplace(now_ + seconds, std::move(task));
  }
  /// Runs `task` as a worker would.
  void globalAsync(Task task) { workTasks_.push_back(std::move(task)); }
  std::shared_ptr<SerialQueue> makeSerialQueue() override;
  bool isMainThread() const override { return !working_; }

  /// Runs the main queue until it is empty.
  void runMain() {
    while (!mainTasks_.empty()) runNext(mainTasks_);
  }

  /// Runs what the workers were given, and what that gives them.
  void runWorkers() {
    working_ = true;
    while (!workTasks_.empty()) runNext(workTasks_);
    working_ = false;
  }

  /// Lets `seconds` pass: the delayed steps that fall due are taken in their order.
  void advance(double seconds) {
    const double until = now_ + seconds;
    for (runMain(); !delayed_.empty() && delayed_.begin()->first <= until; runMain()) {
      now_ = delayed_.begin()->first;
      mainAsync(std::move(delayed_.begin()->second));
      delayed_.erase(delayed_.begin());
    }
    now_ = until;
  }

  /// Until nothing is queued anywhere; delayed steps keep waiting for their time.
  void settle() {
    while (!mainTasks_.empty() || !workTasks_.empty()) {
      runMain();
      runWorkers();
    }
  }

 private:
  class Queue;

  static void runNext(std::deque<Task>& tasks) {
    Task task = std::move(tasks.front());
    tasks.pop_front();
    try {
      task();
    } catch (...) {
      reportFault("a task threw");
    }
  }

  std::deque<Task> mainTasks_;
  std::deque<Task> workTasks_;
  std::multimap<double, Task> delayed_;
  double now_ = 0;
  bool working_ = false;
};

/// Its tasks are workers' tasks; a synchronous one has those run that were submitted before it.
class VirtualDispatch::Queue : public SerialQueue {
 public:
  explicit Queue(VirtualDispatch& dispatch) : dispatch_(dispatch) {}
  void async(Task task) override { dispatch_.globalAsync(std::move(task)); }
  void sync(const std::function<void()>& task) override {
    dispatch_.runWorkers();
    task();
  }

 private:
  VirtualDispatch& dispatch_;
};

inline std::shared_ptr<SerialQueue> VirtualDispatch::makeSerialQueue() {
  return std::make_shared<Queue>(*this);
}

}  // namespace norvane
