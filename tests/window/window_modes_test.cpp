#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kWindow = "cn.kestrio.norvane.window";
constexpr const char* kFrameKey = "NSWindow Frame NorvaneMainWindow";

class WindowModesTest : public HostTest {
 protected:
  void setMode(const std::string& mode) {
    EXPECT_EQ(call(kWindow, "setMode", "{\"mode\":\"" + mode + "\"}"), "success null");
  }
  static NSRect frame() { return MainFlutterWindow::first()->frame(); }
};

TEST_F(WindowModesTest, TheReplyComesBeforeTheWindowMoves) {
  start();
  const NSRect before = frame();
  send(kWindow, "setMode", "{\"mode\":\"auth\"}");
  EXPECT_EQ(takeTranscript(), Lines{"reply success null"});
  EXPECT_EQ(frame(), before);
  dispatch.settle();
  EXPECT_EQ(frame(), (NSRect{{310, 167.5}, {820, 540}}));
}

TEST_F(WindowModesTest, MalformedModesAreTheVault) {
  for (const char* arguments : {"null", "[]", "{}", "{\"mode\":7}"}) {
    relaunch();
    setMode("auth");
    EXPECT_EQ(call(kWindow, "setMode", arguments), "success null");
    EXPECT_EQ(frame().size, (NSSize{940, 600})) << arguments;
    EXPECT_EQ(MainFlutterWindow::first()->currentMode, "vault");
  }
}

TEST_F(WindowModesTest, WithoutAScreenTheModeIsRecordedAndNothingMoves) {
  launch();
  const NSRect before = frame();
  change(R"({"screens":[]})");
  setMode("auth");
  EXPECT_EQ(frame(), before);
  desktop().setProfile({});
  setMode("auth");
  EXPECT_EQ(frame(), before) << "a repeat does not try again";
}

TEST_F(WindowModesTest, RecordsOfTheHomeSystemAreAppliedAndStrangeOnesChangeNothingAndStay) {
  const auto expectSizes = [&](const char* record, NSSize atLaunch, NSSize inTheVault) {
    start();
    setMode("vault");
    setMode("auth");
    host().userDefaults.setString(record, kFrameKey);
    start();
    EXPECT_EQ(frame().size, atLaunch) << record;
    EXPECT_EQ(userDefaults().stringForKey(kFrameKey), record);
    setMode("auth");
    setMode("vault");
    EXPECT_EQ(frame().size, inTheVault) << record;
  };
  for (const char* record : {"1 2 970 620", "1 2 970 620 0 0 9 9 ", "-1 .5 970 620 -9 0.5 0 0"}) {
    expectSizes(record, {970, 620}, {970, 620});
  }
  for (const char* record : {"", "1 2 970 620 5", "1 2 970 620 0 0 9 9 9", "1 2 -970 620",
                             "1 2 970 nan", "1  2 970 620", "1 2 970 620  "}) {
    expectSizes(record, {940, 600}, {820, 540});
  }
}

// What the layouts should come to, worked out another way: from edges instead of centres.

NSRect between(const NSRect& area, double width, double height) {
  const double left = area.origin.x + (area.size.width - width) / 2;
  const double bottom = area.origin.y + (area.size.height - height) / 2;
  return {{left, bottom}, {width, height}};
}

void expectNear(const NSRect& got, const NSRect& expected) {
  const double scale = 1 + std::abs(expected.origin.x) + std::abs(expected.origin.y) +
                       expected.size.width + expected.size.height;
  ASSERT_NEAR(got.origin.x, expected.origin.x, 1e-9 * scale);
  ASSERT_NEAR(got.origin.y, expected.origin.y, 1e-9 * scale);
  ASSERT_NEAR(got.size.width, expected.size.width, 1e-9 * scale);
  ASSERT_NEAR(got.size.height, expected.size.height, 1e-9 * scale);
}

TEST_F(WindowModesTest, RandomLayoutsMatchTheFormulaAcrossLaunches) {
  std::mt19937 random = seededRandom();
  const auto number = [&](double low, double high) {
    return std::uniform_real_distribution(low, high)(random);
  };
  relaunch();
  bool vaultWasShown = false;
  constexpr NSSize kInitial{940, 600};
  NSSize remembered = kInitial;
  const auto isFrame = [](const NSSize& size) { return size.width > 0 && size.height > 0; };
  std::string mode;
  for (int step = 0; step < 1500; ++step) {
    Profile profile;
    const double largest = random() % 8 == 0 ? 1e7 : 3000;
    const NSRect visible{{number(-5000, 5000), number(-5000, 5000)},
                         {number(1, largest), number(1, largest)}};
    profile.screens = {Profile::Screen{visible}};
    switch (random() % 4) {
      case 0:
        relaunch(profile);
        mode.clear();
        expectNear({{}, frame().size}, {{}, isFrame(remembered) ? remembered : kInitial});
        break;
      case 1:
        if (mode == "auth") break;
        desktop().resizeMainWindow({{number(-9000, 9000), 0}, {number(0, 4000), number(0, 4000)}});
        dispatch.settle();
        remembered = frame().size;
        ASSERT_GE(remembered.width, 940);
        ASSERT_GE(remembered.height, 600);
        break;
      default: {
        desktop().setProfile(profile);
        const std::string next = random() % 2 ? "auth" : "vault" + std::to_string(random() % 2);
        const bool changes = next != std::exchange(mode, next);
        const NSRect before = frame();
        setMode(next);
        if (!changes) {
          expectNear(frame(), before);
        } else if (next == "auth") {
          expectNear(frame(), between(visible, 820, 540));
        } else {
          if (!isFrame(remembered)) remembered = before.size;
          if (!std::exchange(vaultWasShown, true)) remembered = kInitial;
          remembered = {std::min(remembered.width, std::max(visible.size.width - 80, 0.0)),
                        std::min(remembered.height, std::max(visible.size.height - 80, 0.0))};
          expectNear(frame(), between(visible, remembered.width, remembered.height));
        }
      }
    }
    if (HasFatalFailure()) FAIL() << "step " << step;
  }
}

}  // namespace
}  // namespace norvane
