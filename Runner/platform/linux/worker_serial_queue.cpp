#include "platform/linux/worker_serial_queue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/linux/glib_dispatch.h"
#include "platform/log.h"

namespace norvane {

struct WorkerSerialQueue::State {
  explicit State(GlibDispatch& workers) : dispatch(workers) {}

  /// Has a worker run the tasks that wait, or says that the queue is idle; `lock` is held.
  void goOn(const std::shared_ptr<State>& self) {
    if (tasks.empty()) {
      busy = false;
      idle.notify_all();
      return;
    }
    busy = true;
    dispatch.globalAsync([self] { self->drain(); });
  }

  void drain() {
    std::unique_lock lock(mutex);
    while (!tasks.empty() && !dispatch.isEnding()) {
      Task task = std::move(tasks.front());
      tasks.pop_front();
      lock.unlock();
      try {
        task();
      } catch (...) {
        reportFault("a task threw");
      }
      task = {};
      lock.lock();
    }
    busy = false;
    idle.notify_all();
  }

  GlibDispatch& dispatch;
  std::mutex mutex;
  std::condition_variable idle;
  std::deque<Task> tasks;
  bool busy = false;  // somebody runs tasks, or has been asked to
};

WorkerSerialQueue::WorkerSerialQueue(GlibDispatch& dispatch)
    : state_(std::make_shared<State>(dispatch)) {}

void WorkerSerialQueue::async(Task task) {
  const std::lock_guard lock(state_->mutex);
  state_->tasks.push_back(std::move(task));
  if (state_->busy) return;
  try {
    state_->goOn(state_);
  } catch (...) {
    state_->busy = false;
    state_->tasks.pop_back();
    throw;
  }
}

void WorkerSerialQueue::sync(const std::function<void()>& task) {
  const GlibDispatch::MainThreadWait wait(state_->dispatch);
  {
    std::unique_lock lock(state_->mutex);
    state_->idle.wait(lock, [this] { return !state_->busy; });
    state_->busy = true;
  }
  struct Turn {
    const std::shared_ptr<State>& state;
    ~Turn() {
      const std::lock_guard lock(state->mutex);
      state->goOn(state);
    }
  } const turn{state_};
  task();
}

}  // namespace norvane
