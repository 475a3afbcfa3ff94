#include "window/main_flutter_window.h"

#include <dlfcn.h>

#include "platform/flutter/flutter_view_controller.h"
#include "support/host_test.h"
#include "window/core_library_loader.h"

namespace norvane {
namespace {

constexpr const char* kDeeplink = "norvane/deeplink";
constexpr const char* kBuffered = "[Norvane] deeplink buffered (Dart not ready yet)";

class MainFlutterWindowTest : public HostTest {
 protected:
  void launch() {
    HostTest::launch();
    takeTranscript();
    log.take();
  }
};

TEST_F(MainFlutterWindowTest, SetUpLoadsTheCoreThenOpensChannelsThenRegistersPlugins) {
  HostTest::launch();
  EXPECT_EQ(log.take(),
            (Lines{"[Norvane] loaded Rust library at: " + bundle.path +
                       "/Contents/Frameworks/libffi_bridge.dylib",
                   "[Norvane] MainFlutterWindow channels registered (deeplink + hotkey + "
                   "hotkey-config + secure-input + secure-clipboard + system-idle)",
                   "[Norvane] global hotkey \u2318\\ registered (status=0)"}));
  EXPECT_EQ(takeTranscript(),
            (Lines{"main started main", "main plugin BiometricStorageMacOSPlugin",
                   "main plugin FileSelectorPlugin", "main plugin LocalAuthPlugin",
                   "main plugin MobileScannerPlugin", "main plugin PrintingPlugin",
                   "main plugin SharedPreferencesPlugin", "main plugin UrlLauncherPlugin"}));
  const auto* alive =
      static_cast<std::int32_t*>(::dlsym(RTLD_DEFAULT, "norvane_example_core_alive"));
  ASSERT_TRUE(alive) << "the core's symbols are not visible to the process";
  EXPECT_EQ(*alive, 1);
}

TEST_F(MainFlutterWindowTest, EarlyLinksWaitLatestWinsAndComeBeforeTheReply) {
  launch();
  desktop().openURL("norvane://item/1");
  desktop().openURL("norvane://item/2");
  dispatch.settle();
  EXPECT_EQ(log.take(), (Lines{"[Norvane] received deeplink: norvane://item/1", kBuffered,
                               "[Norvane] received deeplink: norvane://item/2", kBuffered}));
  EXPECT_EQ(takeTranscript(), Lines{});

  send(kDeeplink, "flutterReady");
  send(kDeeplink, "flutterReady");
  desktop().openURL("norvane://item/3");
  desktop().openURL(std::nullopt);
  desktop().openURL("norvane://\xff");
  EXPECT_EQ(takeTranscript(), (Lines{"norvane/deeplink urlOpened {\"url\":\"norvane://item/2\"}",
                                     "reply success null", "reply success null",
                                     "norvane/deeplink urlOpened {\"url\":\"norvane://item/3\"}"}));
  EXPECT_EQ(call(kDeeplink, "FlutterReady"), "notImplemented");
}

TEST_F(MainFlutterWindowTest, OpenItemIsDroppedBeforeReadinessAndNotReplayed) {
  launch();
  const auto window = MainFlutterWindow::first();
  window->openItemFromQa("early");
  send(kDeeplink, "flutterReady");
  window->openItemFromQa("7");
  window->openItemFromQa(std::nullopt);
  EXPECT_EQ(takeTranscript(),
            (Lines{"reply success null", "norvane/hotkey openItem {\"editItemId\":\"7\"}",
                   "norvane/hotkey openItem {}"}));
}

TEST_F(MainFlutterWindowTest, HandlersDoNotKeepTheWindowAlive) {
  launch();
  auto window = MainFlutterWindow::first();
  const auto engineOwner = window->contentViewController();
  const std::weak_ptr<MainFlutterWindow> weak = window;
  application().removeWindow(*window);
  window.reset();
  ASSERT_TRUE(weak.expired());

  EXPECT_EQ(call(kDeeplink, "flutterReady"), "success null");
  EXPECT_EQ(call(kDeeplink, "unknown"), "success null");
}

TEST_F(MainFlutterWindowTest, TheBridgeNeedsVersion11) {
  for (const auto& [version, expected] :
       {std::pair{NSOperatingSystemVersion{10, 15, 7}, false}, {{11, 0, 0}, true}}) {
    Profile profile;
    profile.osVersion = version;
    relaunch(profile);
    EXPECT_EQ(MainFlutterWindow::first()->autoFillBridge != nullptr, expected);
  }
}

// Frames

NSRect mainFrame() { return MainFlutterWindow::first()->frame(); }

TEST_F(MainFlutterWindowTest, TheFirstLaunchCentresAFrameWithinItsLimits) {
  struct Case {
    NSRect visible;
    NSRect expected;
  };
  for (const auto& [visible, expected] : {
           Case{{{0, 0}, {1440, 875}}, {{250, 137.5}, {940, 600}}},
           Case{{{100, -50}, {780, 500}}, {{130, -100}, {720, 600}}},
           Case{{{0, 0}, {900, 700}}, {{40, 50}, {820, 600}}},
       }) {
    std::filesystem::remove(directory.path / "user-defaults.json");
    Profile profile;
    profile.screens = {Profile::Screen{visible}};
    relaunch(profile);
    EXPECT_EQ(mainFrame(), expected);
    EXPECT_TRUE(userDefaults().boolForKey("NorvaneDidSetInitialFrameV4"));
  }
}

TEST_F(MainFlutterWindowTest, WithoutAScreenTheFirstLaunchIsRepeated) {
  Profile profile;
  profile.screens.clear();
  relaunch(profile);
  EXPECT_FALSE(userDefaults().boolForKey("NorvaneDidSetInitialFrameV4"));
  relaunch();
  EXPECT_EQ(mainFrame(), (NSRect{{250, 137.5}, {940, 600}}));
}

TEST_F(MainFlutterWindowTest, TheFrameComesBackAndADamagedRecordIsNoFrame) {
  relaunch();
  const NSRect moved{{-10.25, 30}, {1000, 700}};
  MainFlutterWindow::first()->setFrame(moved, true, false);
  relaunch();
  EXPECT_EQ(mainFrame(), moved);

  for (const char* record : {"", "1 2 3", "1 2 3 4 5", "1 2 -3 4", "1 2 3 nan", "1  2 3 4", "x"}) {
    JsonUserDefaults(directory.path / "user-defaults.json", log)
        .setString(record, "NSWindow Frame NorvaneMainWindow");
    relaunch();
    EXPECT_EQ(mainFrame().size, (NSSize{940, 600})) << record;
  }
}

// The core library's candidates

TEST_F(MainFlutterWindowTest, DevelopmentCandidatesLieEightLevelsAboveTheBundle) {
  bundle.path = "/w/a/b/c/d/e/f/g/App.app";
  EXPECT_EQ(candidatePaths(),
            (std::vector<std::string>{
                "/w/a/b/c/d/e/f/g/App.app/Contents/Frameworks/libffi_bridge.dylib",
                "/w/target/debug/libffi_bridge.dylib", "/w/target/release/libffi_bridge.dylib"}));
  bundle.path = "/App.app";
  ::setenv("NORVANE_RUST_LIB_PATH", "", 1);
  EXPECT_EQ(candidatePaths(),
            (std::vector<std::string>{"", "/App.app/Contents/Frameworks/libffi_bridge.dylib",
                                      "/target/debug/libffi_bridge.dylib",
                                      "/target/release/libffi_bridge.dylib"}));
  ::unsetenv("NORVANE_RUST_LIB_PATH");
}

}  // namespace
}  // namespace norvane
