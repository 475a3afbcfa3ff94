#include <algorithm>
#include <array>

#include "platform/ns_application.h"
#include "services/app_services.h"
#include "support/host_test.h"

namespace norvane {
namespace {

constexpr const char* kConfig = "cn.kestrio.norvane.hotkey.config";

class HotkeyTest : public HostTest {
 protected:
  std::string setChoice(const std::string& code) {
    return call(kConfig, "setChoice", "{\"code\":\"" + code + "\"}");
  }
};

// The chain as a person would write it down: code, label, key, modifiers.
struct Row {
  const char* code;
  std::string label;
  Hotkey hotkey;
};
const std::array<Row, 8> kRows{{
    {"cmd-backslash", "\u2318\\", {42, 256}},
    {"cmd-shift-backslash", "\u2318\u21E7\\", {42, 768}},
    {"ctrl-opt-backslash", "\u2303\u2325\\", {42, 6144}},
    {"ctrl-opt-cmd-o", "\u2303\u2325\u2318O", {31, 6400}},
    {"cmd-shift-space", "\u2318\u21E7Space", {49, 768}},
    {"opt-shift-space", "\u2325\u21E7Space", {49, 2560}},
    {"ctrl-opt-space", "\u2303\u2325Space", {49, 6144}},
    {"ctrl-opt-cmd-bsl", "\u2303\u2325\u2318\\", {42, 6400}},
}};

std::vector<int> expectedOrder(const std::string& choice, bool rival) {
  std::vector<int> order{0, 1, 2, 3, 4, 5, 6, 7};
  if (choice == "auto" && rival) return {1, 2, 3, 5, 6, 7, 0, 4};
  for (int row = 0; row < 8; ++row) {
    if (choice == kRows[row].code)
      std::rotate(order.begin(), order.begin() + row, order.begin() + row + 1);
  }
  return order;
}

TEST_F(HotkeyTest, TheFirstFreeCombinationIsTakenWhateverOthersHold) {
  start();
  std::vector<std::string> choices{"auto", "no-such-code"};
  for (const Row& row : kRows) choices.emplace_back(row.code);

  for (const bool rival : {false, true}) {
    for (int taken = 0; taken < 256; ++taken) {
      Profile profile;
      if (rival) profile.applications.push_back({"com.agilebits.onepassword7", "1P", false, false});
      for (int row = 0; row < 8; ++row) {
        if (taken >> row & 1) profile.takenHotkeys.push_back(kRows[row].hotkey);
      }
      for (const std::string& choice : choices) {
        desktop().setProfile({});
        setChoice("before");
        desktop().setProfile(profile);
        log.take();
        const std::string reply = setChoice(choice);

        Lines expected{"[Norvane] hotkey choice changing: before \u2192 " + choice};
        if (choice == "auto" && rival) {
          expected.push_back(
              "[Norvane] 1Password 运行中 — \u2318\\ / \u2318\u21E7Space 降级到候选链尾");
        }
        std::string label;
        std::optional<Hotkey> held;
        for (const int row : expectedOrder(choice, rival)) {
          if (taken >> row & 1) {
            expected.push_back("[Norvane] hotkey " + kRows[row].label +
                               " RegisterEventHotKey failed: -9878 — 已被占用,尝试下一个");
            continue;
          }
          label = kRows[row].label;
          held = kRows[row].hotkey;
          expected.push_back("[Norvane] global hotkey " + label + " registered (status=0)");
          break;
        }
        if (!held) {
          expected.push_back(
              "[Norvane] **所有**候选 hotkey 都被占用!Quick Access 不可用,"
              "用户需手动从主 App 触发");
        }
        const bool degraded = choice == "auto" && held && label != kRows[0].label;
        std::string escaped = label;
        if (escaped.ends_with('\\')) escaped += '\\';
        ASSERT_EQ(log.take(), expected) << choice << ", taken " << taken;
        ASSERT_EQ(reply, "success {\"registered\":\"" + escaped +
                             "\",\"degraded\":" + (degraded ? "true" : "false") + "}");
        ASSERT_EQ(host().hotkeys.registered(), held);
      }
    }
  }
}

TEST_F(HotkeyTest, TheSameChoiceChangesNothingAlsoWhenNothingIsRegistered) {
  Profile profile;
  for (const Row& row : kRows) profile.takenHotkeys.push_back(row.hotkey);
  start(profile);
  desktop().setProfile({});
  const std::string none = "success {\"registered\":\"\",\"degraded\":false}";
  for (const char* arguments : {"{\"code\":\"auto\"}", "null", "[\"auto\"]", "{}"}) {
    EXPECT_EQ(call(kConfig, "setChoice", arguments), none) << arguments;
  }
  EXPECT_EQ(log.take(), Lines{});
}

TEST_F(HotkeyTest, WithoutAHandlerNothingIsTriedUntilTheChoiceChanges) {
  Profile profile;
  profile.hotkeyHandlerStatus = -50;
  start(profile);
  setChoice("ctrl-opt-space");
  EXPECT_EQ(log.take(), (Lines{"[Norvane] hotkey choice changing: auto \u2192 ctrl-opt-space",
                               "[Norvane] InstallEventHandler failed: -50"}));
  EXPECT_FALSE(host().hotkeys.registered());
  desktop().setProfile({});
  setChoice("auto");
  EXPECT_EQ(host().hotkeys.registered(), kRows[0].hotkey);
}

TEST_F(HotkeyTest, APressIsHandledInALaterTurnAndSurvivesAChangeOfChoice) {
  start();
  host().hotkeys.press({49, 6144});
  host().hotkeys.press(kRows[0].hotkey);
  AppServices::current()->setHotkeyChoice("ctrl-opt-space");
  EXPECT_EQ(application().windows().size(), 1u) << "inside the handler";
  dispatch.settle();
  ASSERT_EQ(application().windows().size(), 2u);
  EXPECT_TRUE(application().windows()[1]->isVisible());

  host().hotkeys.press({49, 6144});
  application().setDelegate(nullptr);
  dispatch.settle();
}

}  // namespace
}  // namespace norvane
