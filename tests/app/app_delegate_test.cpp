#include "app/app_delegate.h"

#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

using AppDelegateTest = HostTest;

TEST_F(AppDelegateTest, AfterLaunchItSaysWhetherTheMainWindowHadToBeForced) {
  for (const auto& [profile, said] :
       {std::pair{"{}", "[Norvane] global hotkey "},
        {R"({"mainWindowVisible":false})",
         "[Norvane] forced MainFlutterWindow visible (post-launch fallback)"},
        {R"({"mainWindow":false})", "[Norvane] no MainFlutterWindow found post-launch"}}) {
    Profile launched;
    applyToProfile(parseJson(profile), launched);
    relaunch(launched);
    EXPECT_TRUE(log.take().back().starts_with(said)) << profile;
  }
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
