#include "window/main_flutter_window.h"

#include <fstream>

#include <sys/stat.h>

#include "support/host_test.h"

namespace norvane {
namespace {

constexpr const char* kDeeplink = "norvane/deeplink";

using MainFlutterWindowTest = HostTest;

TEST_F(MainFlutterWindowTest, EarlyLinksAreKeptAndWhatIsNoTextIsNoLink) {
  start();
  application().openURL("norvane://item/1");
  EXPECT_EQ(log.take(), (Lines{"[Norvane] received deeplink: norvane://item/1",
                               "[Norvane] deeplink buffered (Dart not ready yet)"}));
  application().openURL(std::nullopt);
  application().openURL("norvane://\xff");
  send(kDeeplink, "flutterReady");
  EXPECT_EQ(takeTranscript(), (Lines{"norvane/deeplink urlOpened {\"url\":\"norvane://item/1\"}",
                                     "reply success null"}));
}

// Frames

NSRect mainFrame() { return MainFlutterWindow::first()->frame(); }

TEST_F(MainFlutterWindowTest, TheFirstLaunchWithAScreenCentresAFrameWithinItsLimits) {
  Profile profile;
  profile.screens.clear();
  relaunch(profile);
  EXPECT_FALSE(userDefaults().boolForKey("NorvaneDidSetInitialFrameV4"));
  for (const auto& [visible, expected] : {
           std::pair<NSRect, NSRect>{{{0, 0}, {1440, 875}}, {{250, 137.5}, {940, 600}}},
           {{{100, -50}, {780, 500}}, {{130, -100}, {720, 600}}},
           {{{0, 0}, {900, 700}}, {{40, 50}, {820, 600}}},
       }) {
    profile.screens = {Profile::Screen{visible}};
    relaunch(profile);
    EXPECT_EQ(mainFrame(), expected);
    EXPECT_TRUE(userDefaults().boolForKey("NorvaneDidSetInitialFrameV4"));
    std::filesystem::remove(directory.path / "user-defaults.json");
  }
}

TEST_F(MainFlutterWindowTest, ACandidateIsTheFileThatWasTestedAndNothingThatCouldHang) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.path);
  std::ofstream("libc.so.6") << "no library, but one of that name is loaded already";
  ::mkfifo("pipe", 0600);
  for (const char* path : {"libc.so.6", "pipe", "."}) {
    EXPECT_FALSE(host().loader.dlopen(path)) << path;
    EXPECT_TRUE(host().loader.dlerror()) << path;
    EXPECT_FALSE(host().loader.dlerror()) << path;
  }
  std::filesystem::create_symlink(NORVANE_TEST_BUNDLE "/Contents/Frameworks/libffi_bridge.dylib",
                                  "core");
  EXPECT_TRUE(host().loader.dlopen("core"));
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace norvane
