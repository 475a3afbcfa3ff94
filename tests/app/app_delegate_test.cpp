#include "app/app_delegate.h"

#include <algorithm>

#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kForced = "[Norvane] forced MainFlutterWindow visible (post-launch fallback)";
constexpr const char* kNone = "[Norvane] no MainFlutterWindow found post-launch";

class AppDelegateTest : public HostTest {
 protected:
  /// What a launch logs once its services are on, the last of which is the hotkey.
  Lines launchOn(const Profile& profile) {
    relaunch(profile);
    Lines lines = log.take();
    const auto isHotkey = [](const std::string& line) {
      return line.starts_with("[Norvane] global hotkey ");
    };
    const auto hotkey = std::find_if(lines.begin(), lines.end(), isHotkey);
    EXPECT_NE(hotkey, lines.end());
    lines.erase(lines.begin(), hotkey + 1);
    return lines;
  }
};

TEST_F(AppDelegateTest, AfterLaunchAHiddenMainWindowIsShownOnce) {
  EXPECT_EQ(launchOn({}), Lines{});
  EXPECT_FALSE(desktop().isActive());

  Profile hidden;
  hidden.mainWindowVisible = false;
  EXPECT_EQ(launchOn(hidden), Lines{kForced});
  EXPECT_TRUE(MainFlutterWindow::first()->isVisible());
  EXPECT_TRUE(desktop().isKey(*MainFlutterWindow::first()));
  EXPECT_TRUE(desktop().isActive());

  Profile none;
  none.mainWindow = false;
  EXPECT_EQ(launchOn(none), Lines{kNone});
  EXPECT_FALSE(desktop().isActive());
  desktop().reopen();
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
  desktop().reopen();
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(desktop().isKey(*window));
  EXPECT_FALSE(second->isVisible());

  second->makeKeyAndOrderFront();
  desktop().reopen();
  EXPECT_TRUE(desktop().isKey(*second)) << "with windows on screen, reopening changes nothing";
  EXPECT_TRUE(application().delegate()->applicationShouldHandleReopen(false));
  EXPECT_TRUE(application().delegate()->applicationSupportsSecureRestorableState());
}

}  // namespace
}  // namespace norvane
