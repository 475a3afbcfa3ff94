#pragma once

#include <atomic>
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
  GlibDispatch();
  ~GlibDispatch() override;

  void mainAsync(Task task) override;
  void mainAfter(double seconds, Task task) override;
  void globalAsync(Task task) override;
  std::shared_ptr<SerialQueue> makeSerialQueue() override;
  bool isMainThread() const override;

  /// Runs the main loop until `quit`, then ends the workers: their running tasks finish, those that
  /// have not begun are dropped, and nothing that is submitted later runs. Main thread.
  void run();
  /// Ends `run` after the current turn, or before its first one; main thread.
  void quit();
  /// Whether nothing is queued, running on a worker, or waiting for its time; main thread.
  bool isQuiet();

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
  bool ending_ = false;
  std::vector<std::thread> workers_;
};

}  // namespace norvane
