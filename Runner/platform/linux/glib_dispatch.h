#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/dispatch.h"

struct _GMainLoop;
struct _GSource;

namespace norvane {

/// The main queue on GLib's default main loop, and a small pool of workers that are started when
/// there is work for them. Made on the main thread, which is the one that calls `run`.
class GlibDispatch : public Dispatch {
 public:
  using Clock = std::chrono::steady_clock;

  /// Says for as long as it lives that the main thread waits for workers. Main thread.
  class MainThreadWait {
   public:
    explicit MainThreadWait(GlibDispatch& dispatch);
    ~MainThreadWait();
    MainThreadWait(const MainThreadWait&) = delete;

   private:
    GlibDispatch& dispatch_;
    const Clock::time_point outer_;
  };

  GlibDispatch();
  ~GlibDispatch() override;

  void mainAsync(Task task) override;
  void mainAfter(double seconds, Task task) override;
  /// Runs `task` on a worker thread. Tasks may run side by side. Any thread.
  void globalAsync(Task task);
  std::shared_ptr<SerialQueue> makeSerialQueue() override;
  bool isMainThread() const override;

  /// Runs the main loop until `quit`, then ends the workers: their running tasks finish, those that
  /// have not begun are dropped, also of serial queues, and nothing that is submitted later runs.
  /// Main thread.
  void run();
  /// Ends `run` after the current turn, or before its first one; main thread.
  void quit();
  /// Whether nothing is queued, running on a worker, or waiting for its time; main thread.
  bool isQuiet();
  /// Whether no task may begin any more; any thread.
  bool isEnding() const { return ending_; }
  /// Since when the main thread has been waiting for workers, by the outermost wait; the end of
  /// time while it has not. Any thread: what may take long asks, to take no longer than a wait may.
  Clock::time_point mainThreadWaitsSince() const { return mainThreadWaitsSince_; }

 private:
  bool mainQueueHasTasks();
  void runNextMainTask();
  void work();
  void endWorkers();

  const std::thread::id mainThread_ = std::this_thread::get_id();
  _GMainLoop* loop_;
  _GSource* source_;
  bool quitting_ = false;

  const std::shared_ptr<GlibDispatch*> self_ = std::make_shared<GlibDispatch*>(this);
  std::mutex mainMutex_;
  std::deque<Task> mainTasks_;
  std::atomic<int> delayed_ = 0;

  std::mutex workMutex_;
  std::condition_variable workReady_;
  std::deque<Task> workTasks_;
  std::size_t idleWorkers_ = 0;
  std::size_t busyWorkers_ = 0;
  std::atomic<bool> ending_ = false;
  std::atomic<Clock::time_point> mainThreadWaitsSince_ = Clock::time_point::max();
  std::vector<std::thread> workers_;
};

}  // namespace norvane
