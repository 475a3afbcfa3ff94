#include "app/app_delegate.h"

#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

using AppDelegateTest = HostTest;

TEST_F(AppDelegateTest, AfterLaunchAHiddenMainWindowIsShownOnce) {
  launch();
  EXPECT_TRUE(log.take().back().starts_with("[Norvane] global hotkey ")) << "nothing to be done";
  EXPECT_FALSE(desktop().isActive());

  Profile hidden;
  hidden.mainWindowVisible = false;
  relaunch(hidden);
  EXPECT_EQ(log.take().back(), "[Norvane] forced MainFlutterWindow visible (post-launch fallback)");
  EXPECT_TRUE(application().isKey(*MainFlutterWindow::first()));
  EXPECT_TRUE(desktop().isActive());

  Profile none;
  none.mainWindow = false;
  relaunch(none);
  EXPECT_EQ(log.take().back(), "[Norvane] no MainFlutterWindow found post-launch");
  EXPECT_FALSE(desktop().isActive());
  application().reopen();
  desktop().setProfile({});
  EXPECT_TRUE(MainFlutterWindow::first()->isVisible()) << "made late";
}

TEST_F(AppDelegateTest, ClosingKeepsTheProcessAndReopeningShowsTheFirstWindow) {
  launch();
  const auto window = MainFlutterWindow::first();
  ASSERT_TRUE(desktop().closeMainWindow());
  dispatch.settle();
  EXPECT_FALSE(quitAsked);
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(desktop().closeMainWindow());

  const auto second =
      application().makeWindow<MainFlutterWindow>(NSRect{{0, 0}, {10, 10}}, NSWindowStyleMask{0});
  application().reopen();
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(application().isKey(*window));
  EXPECT_FALSE(second->isVisible());

  second->makeKeyAndOrderFront();
  application().reopen();
  EXPECT_TRUE(application().isKey(*second)) << "with windows on screen, reopening changes nothing";
  EXPECT_TRUE(application().delegate()->applicationShouldHandleReopen(false));
  EXPECT_TRUE(application().delegate()->applicationSupportsSecureRestorableState());
}

}  // namespace
}  // namespace norvane
