// What the host relies on of the main queue, on the loop that also serves the real desktop.

#include <string>
#include <thread>

#include <glib.h>
#include <gtest/gtest.h>

#include "platform/linux/glib_dispatch.h"
#include "real_desktop.h"

namespace norvane {
namespace {

TEST(MainQueueContract, TasksOfAllThreadsRunInOrderAndAheadOfRedraws) {
  GlibDispatch dispatch;
  std::string order;
  g_idle_add_full(
      G_PRIORITY_DEFAULT_IDLE,  // the toolkit redraws at about this priority
      [](gpointer text) -> gboolean {
        *static_cast<std::string*>(text) += "redraw ";
        return G_SOURCE_REMOVE;
      },
      &order, nullptr);
  dispatch.mainAsync([&] {
    order += "first ";
    dispatch.mainAsync([&] { order += "nested "; });
  });
  std::thread([&] { dispatch.mainAsync([&] { order += "worker "; }); }).join();
  EXPECT_EQ(order, "");
  ASSERT_TRUE(await([&] { return order.find("redraw") != std::string::npos; }));
  EXPECT_EQ(order, "first worker nested redraw ");
}

}  // namespace
}  // namespace norvane
