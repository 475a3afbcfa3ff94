#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <glib.h>
#include <gtest/gtest.h>

#include "platform/linux/glib_dispatch.h"

namespace norvane {
namespace {

// Runs under the thread sanitizer too.
TEST(DispatchThreadsTest, MainTasksKeepEachThreadsOrderAndRunOnTheMainThread) {
  constexpr int kThreads = 4;
  constexpr int kTasks = 1000;
  GlibDispatch dispatch;
  std::vector<int> next(kThreads, 0);
  int done = 0;
  for (int thread = 0; thread < kThreads; ++thread) {
    dispatch.globalAsync([&, thread] {
      EXPECT_FALSE(dispatch.isMainThread());
      for (int i = 0; i < kTasks; ++i) {
        dispatch.mainAsync([&, thread, i] {
          EXPECT_TRUE(dispatch.isMainThread());
          EXPECT_EQ(next[thread]++, i);
          if (++done == kThreads * kTasks) dispatch.quit();
        });
      }
    });
  }
  EXPECT_FALSE(dispatch.isQuiet());
  dispatch.run();
  EXPECT_EQ(done, kThreads * kTasks);
}

// The toolkit's redraws are tasks of the same loop, at about this priority.
TEST(DispatchThreadsTest, TasksRunAheadOfRedrawsAndInTheOrderOfSubmissionFromEveryThread) {
  struct {
    GlibDispatch dispatch;
    std::string order;
  } run;
  g_idle_add_full(
      G_PRIORITY_DEFAULT_IDLE,
      [](gpointer data) -> gboolean {
        static_cast<decltype(run)*>(data)->dispatch.quit();
        return G_SOURCE_REMOVE;
      },
      &run, nullptr);
  run.dispatch.mainAsync([&] {
    run.order += "first ";
    run.dispatch.mainAsync([&] { run.order += "nested "; });
  });
  std::thread([&] { run.dispatch.mainAsync([&] { run.order += "worker "; }); }).join();
  EXPECT_EQ(run.order, "");
  run.dispatch.run();
  EXPECT_EQ(run.order, "first worker nested ");
}

TEST(DispatchThreadsTest, ADelayedStepWaitsItsTimeAndCountsAsUnrest) {
  GlibDispatch dispatch;
  const auto begin = std::chrono::steady_clock::now();
  std::vector<int> order;
  dispatch.mainAfter(0.02, [&] {
    order.push_back(1);
    dispatch.quit();
  });
  dispatch.mainAsync([&] { order.push_back(0); });
  EXPECT_FALSE(dispatch.isQuiet());
  dispatch.run();
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
  EXPECT_EQ(order, (std::vector{0, 1}));
  EXPECT_TRUE(dispatch.isQuiet());
}

TEST(DispatchThreadsTest, TheEndWaitsForRunningTasksAndDropsTheOthers) {
  std::atomic<bool> begun = false;
  std::atomic<bool> finished = false;
  const auto held = std::make_shared<int>();
  {
    GlibDispatch dispatch;
    dispatch.globalAsync([&] {
      begun = true;
      begun.notify_one();
      std::this_thread::yield();
      finished = true;
    });
    begun.wait(false);
    for (int i = 0; i < 100; ++i) dispatch.mainAsync([held] { FAIL() << "nobody runs the loop"; });
    const auto queue = dispatch.makeSerialQueue();
    queue->async([&] {
      begun = false;
      begun.notify_one();
      while (!dispatch.isEnding()) std::this_thread::yield();
      EXPECT_LE(dispatch.mainThreadWaitsSince(), GlibDispatch::Clock::now());
    });
    queue->async([held] { FAIL() << "begun after the end"; });
    begun.wait(true);
  }
  EXPECT_TRUE(finished);
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace norvane
