// Hotkeys, secure entry, layouts and idle time.

#include <chrono>
#include <vector>

#include "contract.h"
#include "worlds.h"

namespace norvane {
namespace {

TYPED_TEST_SUITE(InputContract, InputWorlds);

TYPED_TEST(InputContract, AHotkeyOfOthersIsRefusedAndOneOfOursIsHeardOfUntilItIsGivenBack) {
  ASSERT_TRUE(this->othersTake(kCmdBackslash));
  EXPECT_EQ(this->take(kCmdBackslash), eventHotKeyExistsErr);
  EXPECT_FALSE(this->ref);
  std::vector<unsigned> expected;
  for (const Hotkey& combination : {Hotkey{kVK_ANSI_Backslash, cmdKey | shiftKey},
                                    {kVK_ANSI_O, controlKey | optionKey | cmdKey},
                                    {kVK_Space, optionKey | shiftKey}}) {
    expected.push_back(combination.key);
    ASSERT_EQ(this->take(combination, combination.key), noErr);
    EXPECT_FALSE(this->isFree(combination));
    this->press(kCmdBackslash);  // nothing comes of it
    this->press(combination);
    EXPECT_TRUE(await([&] { return this->presses.size() >= expected.size(); }));
    EXPECT_EQ(this->presses, expected);
    EXPECT_EQ(this->hotkeys.UnregisterEventHotKey(*this->ref), noErr);
    EXPECT_NE(this->hotkeys.UnregisterEventHotKey(*this->ref), noErr);
    EXPECT_TRUE(this->isFree(combination));
    this->press(combination);
  }
}

TYPED_TEST(InputContract, SecureEntryIsNotCountedAndALayoutCanBeChosenAndRestored) {
  const auto before = this->keyboard.TISCopyCurrentKeyboardInputSource();
  const auto latin = this->keyboard.TISCopyCurrentASCIICapableKeyboardInputSource();
  ASSERT_TRUE(before && latin);
  EXPECT_FALSE(this->isLatin() || this->isSecret());
  this->keyboard.TISSelectInputSource(*latin);
  this->keyboard.EnableSecureEventInput();
  this->keyboard.EnableSecureEventInput();
  EXPECT_TRUE(await([&] { return this->isLatin() && this->isSecret(); }));
  this->keyboard.DisableSecureEventInput();
  this->keyboard.TISSelectInputSource(*before);
  EXPECT_TRUE(await([&] { return !this->isLatin() && !this->isSecret(); }));
}

TYPED_TEST(InputContract, IdleTimePassesUntilThereIsInput) {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  this->press(kCmdBackslash);
  EXPECT_TRUE(await([&] { return Clock::now() >= begin + std::chrono::milliseconds(300); }));
  const double before = this->idle.secondsSinceLastEventType(kCGEventKeyDown);
  EXPECT_GE(before, 0.25);
  EXPECT_LT(before, 1 + std::chrono::duration<double>(Clock::now() - begin).count());
  this->press(kCmdBackslash);
  EXPECT_LT(this->idle.secondsSinceLastEventType(kCGEventKeyDown), before);
}

}  // namespace
}  // namespace norvane
