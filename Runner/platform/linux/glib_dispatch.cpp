#include "platform/linux/glib_dispatch.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <utility>

#include <glib.h>

#include "platform/linux/worker_serial_queue.h"
#include "platform/log.h"

namespace norvane {
namespace {

// As many as may be at work, however few the processors: tasks wait for disks and for other
// processes, and none of the serial queues should wait for another one's.
constexpr unsigned kFewestWorkers = 4;

struct QueueSource {
  GSource base;
  GlibDispatch* dispatch;
  bool (GlibDispatch::*hasTasks)();
  void (GlibDispatch::*runNext)();
};

GSourceFuncs queueFunctions() {
  const auto ready = [](GSource* source) -> gboolean {
    auto* queue = reinterpret_cast<QueueSource*>(source);
    return (queue->dispatch->*queue->hasTasks)();
  };
  static constexpr auto kReady = ready;
  GSourceFuncs functions{};
  functions.prepare = [](GSource* source, gint* timeout) -> gboolean {
    *timeout = -1;
    return kReady(source);
  };
  functions.check = kReady;
  functions.dispatch = [](GSource* source, GSourceFunc, gpointer) -> gboolean {
    auto* queue = reinterpret_cast<QueueSource*>(source);
    (queue->dispatch->*queue->runNext)();
    return G_SOURCE_CONTINUE;
  };
  return functions;
}

// Nothing may be thrown into the main loop or out of a thread.
void runTask(Task& task) {
  try {
    task();
  } catch (...) {
    reportFault("a task threw");
  }
}

}  // namespace

GlibDispatch::MainThreadWait::MainThreadWait(GlibDispatch& dispatch)
    : dispatch_(dispatch), outer_(dispatch.mainThreadWaitsSince_) {
  dispatch_.mainThreadWaitsSince_ = std::min(outer_, Clock::now());
}

GlibDispatch::MainThreadWait::~MainThreadWait() { dispatch_.mainThreadWaitsSince_ = outer_; }

GlibDispatch::GlibDispatch() : loop_(g_main_loop_new(nullptr, FALSE)) {
  static GSourceFuncs functions = queueFunctions();
  source_ = g_source_new(&functions, sizeof(QueueSource));
  auto* queue = reinterpret_cast<QueueSource*>(source_);
  queue->dispatch = this;
  queue->hasTasks = &GlibDispatch::mainQueueHasTasks;
  queue->runNext = &GlibDispatch::runNextMainTask;
  g_source_attach(source_, nullptr);
}

GlibDispatch::~GlibDispatch() {
  endWorkers();
  g_source_destroy(source_);
  g_source_unref(source_);
  g_main_loop_unref(loop_);
}

void GlibDispatch::mainAsync(Task task) {
  {
    const std::lock_guard lock(mainMutex_);
    mainTasks_.push_back(std::move(task));
  }
  if (!isMainThread()) g_main_context_wakeup(nullptr);
}

void GlibDispatch::mainAfter(double seconds, Task task) {
  // The main loop may outlive the dispatch.
  struct Delayed {
    std::weak_ptr<GlibDispatch*> dispatch;
    Task task;
  };
  ++delayed_;
  const auto milliseconds = static_cast<guint>(std::lround(seconds * 1000));
  g_timeout_add_full(
      G_PRIORITY_DEFAULT, milliseconds,
      [](gpointer data) -> gboolean {
        auto* delayed = static_cast<Delayed*>(data);
        if (const auto dispatch = delayed->dispatch.lock()) {
          (*dispatch)->mainAsync(std::move(delayed->task));
          --(*dispatch)->delayed_;
        }
        return G_SOURCE_REMOVE;
      },
      std::make_unique<Delayed>(Delayed{self_, std::move(task)}).release(),
      [](gpointer data) { std::unique_ptr<Delayed>(static_cast<Delayed*>(data)); });
}

void GlibDispatch::globalAsync(Task task) {
  const std::lock_guard lock(workMutex_);
  if (ending_) return;
  workTasks_.push_back(std::move(task));
  const std::size_t limit = std::max(kFewestWorkers, std::thread::hardware_concurrency());
  if (idleWorkers_ < workTasks_.size() && workers_.size() < limit) {
    try {
      workers_.emplace_back([this] { work(); });
    } catch (...) {
      // Those that are there come to it. Without any, it must not run once there are some: who
      // submitted it hears that it was refused.
      if (workers_.empty()) {
        workTasks_.pop_back();
        throw;
      }
    }
  }
  workReady_.notify_one();
}

void GlibDispatch::work() {
  std::unique_lock lock(workMutex_);
  for (;;) {
    ++idleWorkers_;
    workReady_.wait(lock, [this] { return ending_ || !workTasks_.empty(); });
    --idleWorkers_;
    if (ending_) return;
    Task task = std::move(workTasks_.front());
    workTasks_.pop_front();
    ++busyWorkers_;
    lock.unlock();
    runTask(task);
    task = {};
    lock.lock();
    --busyWorkers_;
    // Whoever waits for quiet looks again.
    g_main_context_wakeup(nullptr);
  }
}

std::shared_ptr<SerialQueue> GlibDispatch::makeSerialQueue() {
  return std::make_shared<WorkerSerialQueue>(*this);
}

bool GlibDispatch::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

void GlibDispatch::run() {
  if (!quitting_) g_main_loop_run(loop_);
  endWorkers();
}

void GlibDispatch::endWorkers() {
  const MainThreadWait wait(*this);
  std::deque<Task> dropped;
  {
    const std::lock_guard lock(workMutex_);
    ending_ = true;
    dropped.swap(workTasks_);
  }
  workReady_.notify_all();
  for (std::thread& worker : workers_) worker.join();
  workers_.clear();
}

void GlibDispatch::quit() {
  quitting_ = true;
  g_main_loop_quit(loop_);
}

bool GlibDispatch::isQuiet() {
  {
    const std::lock_guard lock(workMutex_);
    if (busyWorkers_ > 0 || !workTasks_.empty()) return false;
  }
  // A worker's last step is to submit to the main queue, so this one is asked second.
  return delayed_ == 0 && !mainQueueHasTasks();
}

bool GlibDispatch::mainQueueHasTasks() {
  const std::lock_guard lock(mainMutex_);
  return !mainTasks_.empty();
}

void GlibDispatch::runNextMainTask() {
  Task task;
  {
    const std::lock_guard lock(mainMutex_);
    if (mainTasks_.empty()) return;
    task = std::move(mainTasks_.front());
    mainTasks_.pop_front();
  }
  runTask(task);
}

}  // namespace norvane
