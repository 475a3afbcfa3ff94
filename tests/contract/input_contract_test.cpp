// Hotkeys, secure entry, layouts and idle time.

#include <chrono>
#include <vector>

#include "contract.h"
#include "desktop_worlds.h"
#include "simulated_worlds.h"

namespace norvane {
namespace {

using Worlds = testing::Types<SimulatedInput, DesktopInput>;
TYPED_TEST_SUITE(InputContract, Worlds);

TYPED_TEST(InputContract, AHotkeyOfOthersIsRefusedAndOneOfOursIsHeardOfUntilItIsGivenBack) {
  ASSERT_TRUE(this->othersTake(kCmdBackslash));
  EXPECT_EQ(this->take(kCmdBackslash), eventHotKeyExistsErr);
  EXPECT_FALSE(this->ref);
  std::vector<unsigned> expected;
  for (const Combination& combination :
       {Combination{{42, 0x300}, 51, Mod4Mask | ShiftMask, {133, 50}},
        Combination{{31, 0x1900}, 32, ControlMask | Mod1Mask | Mod4Mask, {37, 64, 133}},
        Combination{{49, 0x0A00}, 65, Mod1Mask | ShiftMask, {64, 50}}}) {
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
  GlibDispatch clock;
  const auto begin = GlibDispatch::Clock::now();
  this->press(kCmdBackslash);
  bool passed = false;
  clock.mainAfter(0.3, [&] { passed = true; });
  EXPECT_TRUE(await([&] { return passed; }));
  const double before = this->idle.secondsSinceLastEventType(kCGEventKeyDown);
  EXPECT_GE(before, 0.25);
  EXPECT_LT(before, 1 + std::chrono::duration<double>(GlibDispatch::Clock::now() - begin).count());
  this->press(kCmdBackslash);
  EXPECT_LT(this->idle.secondsSinceLastEventType(kCGEventKeyDown), before);
}

}  // namespace
}  // namespace norvane
