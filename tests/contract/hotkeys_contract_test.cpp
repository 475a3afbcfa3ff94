// System-wide hotkeys: the simulated ones and the X server's.

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "platform/gtk/hotkeys.h"
#include "platform/gtk/x11_hotkeys.h"
#include "platform/headless/headless_hotkeys.h"
#include "platform/linux/glib_dispatch.h"
#include "x11_person.h"

namespace norvane {
namespace {

const Hotkey kBackslash{kVK_ANSI_Backslash, cmdKey};

/// The hotkeys, and the person and other applications around them.
class Hotkeys {
 public:
  virtual ~Hotkeys() = default;
  virtual CarbonEventManager& manager() = 0;
  virtual void othersTake(const Hotkey& hotkey) = 0;
  virtual bool isFree(const Hotkey& hotkey) = 0;
  virtual void press(const Hotkey& hotkey) = 0;
};

class SimulatedHotkeys : public Hotkeys {
 public:
  CarbonEventManager& manager() override { return hotkeys_; }
  void othersTake(const Hotkey& hotkey) override {
    profile_.change([&](Profile& profile) { profile.takenHotkeys.push_back(hotkey); });
  }
  bool isFree(const Hotkey& hotkey) override { return hotkeys_.registered() != hotkey; }
  void press(const Hotkey& hotkey) override { hotkeys_.press(hotkey); }

 private:
  LiveProfile profile_{Profile{}};
  HeadlessHotkeys hotkeys_{profile_};
};

class RealHotkeys : public Hotkeys {
 public:
  CarbonEventManager& manager() override { return *hotkeys_; }
  void othersTake(const Hotkey& hotkey) override {
    ASSERT_TRUE(grabKey(others_, key(hotkey), mask(hotkey)));
  }
  bool isFree(const Hotkey& hotkey) override {
    const bool isFree = grabKey(others_, key(hotkey), mask(hotkey) | kCapsLock);
    if (isFree) ungrabKey(others_, key(hotkey), mask(hotkey) | kCapsLock);
    return isFree;
  }
  void press(const Hotkey& hotkey) override { hold(hotkey), release(hotkey); }

  void hold(const Hotkey& hotkey) {
    for (const Modifier& modifier : kModifiers) {
      if (hotkey.modifiers & modifier.carbon) others_.key(modifier.key, true);
    }
    others_.key(key(hotkey), true);
  }
  /// The modifiers first, as people do.
  void release(const Hotkey& hotkey) {
    for (const Modifier& modifier : kModifiers) {
      if (hotkey.modifiers & modifier.carbon) others_.key(modifier.key, false);
    }
    others_.key(key(hotkey), false);
  }
  OtherClient& others() { return others_; }
  const EventTime& time() const { return time_; }
  /// What came of grabbed keys, repetitions included.
  int keyPresses() const { return keyPresses_; }

 private:
  struct Modifier {
    std::uint32_t carbon;
    unsigned key;
    unsigned mask;
  };
  static constexpr Modifier kModifiers[] = {
      {cmdKey, 133, kMod4}, {optionKey, 64, 8}, {controlKey, 37, 4}, {shiftKey, 50, 1}};
  static constexpr unsigned kCapsLock = 2;

  static unsigned key(const Hotkey& hotkey) {
    return hotkey.key == kVK_Space ? 65 : hotkey.key == kVK_ANSI_O ? 32 : 51;
  }
  static unsigned mask(const Hotkey& hotkey) {
    unsigned mask = 0;
    for (const Modifier& modifier : kModifiers) {
      if (hotkey.modifiers & modifier.carbon) mask |= modifier.mask;
    }
    return mask;
  }

  OtherClient others_;
  EventTime time_;
  GlibDispatch dispatch_;
  int keyPresses_ = 0;
  const X11EventFilter filter_{[this](const _XEvent& event) {
    keyPresses_ += isKeyPress(event) ? 1 : 0;
    return false;
  }};
  std::unique_ptr<CarbonEventManager> hotkeys_ = makeHotkeys(time_, dispatch_);
};

template <class World>
class HotkeysContract : public testing::Test {
 protected:
  HotkeysContract() {
    std::optional<EventHandlerRef> handler;
    const auto pressed = [this](const CarbonEvent& event) {
      EventHotKeyID id;
      EXPECT_EQ(event.GetEventParameter(kEventParamDirectObject, typeEventHotKeyID, id), noErr);
      presses_.push_back(id.id);
      return noErr;
    };
    EXPECT_EQ(world_.manager().InstallEventHandler(
                  pressed, {kEventClassKeyboard, kEventHotKeyPressed}, handler),
              noErr);
    EXPECT_TRUE(handler);
  }

  OSStatus take(const Hotkey& hotkey, std::uint32_t id) {
    ref_.reset();
    const OSStatus status =
        world_.manager().RegisterEventHotKey(hotkey.key, hotkey.modifiers, {1, id}, ref_);
    EXPECT_EQ(ref_.has_value(), status == noErr);
    return status;
  }
  OSStatus giveBack() { return world_.manager().UnregisterEventHotKey(*ref_); }

  World world_;
  std::optional<EventHotKeyRef> ref_;
  std::vector<unsigned> presses_;
};

using Worlds = testing::Types<SimulatedHotkeys, RealHotkeys>;
TYPED_TEST_SUITE(HotkeysContract, Worlds);

TYPED_TEST(HotkeysContract, WhatOthersHoldIsRefusedAndWhatIsHeldIsHeardOfUntilItIsGivenBack) {
  this->world_.othersTake(kBackslash);
  EXPECT_EQ(this->take(kBackslash, 1), eventHotKeyExistsErr);
  std::vector<unsigned> expected;
  for (const Hotkey& hotkey : {Hotkey{kVK_ANSI_Backslash, cmdKey | shiftKey},
                               {kVK_ANSI_Backslash, controlKey | optionKey},
                               {kVK_ANSI_O, controlKey | optionKey | cmdKey},
                               {kVK_Space, cmdKey | shiftKey},
                               {kVK_Space, optionKey | shiftKey}}) {
    const auto id = static_cast<unsigned>(expected.size());
    ASSERT_EQ(this->take(hotkey, id), noErr);
    EXPECT_FALSE(this->world_.isFree(hotkey));
    this->world_.press(kBackslash);  // not ours: nothing comes of it
    this->world_.press(hotkey);
    expected.push_back(id);
    EXPECT_TRUE(await([&] { return this->presses_.size() >= expected.size(); }));
    EXPECT_EQ(this->presses_, expected);
    EXPECT_EQ(this->giveBack(), noErr);
    EXPECT_TRUE(this->world_.isFree(hotkey));
    this->world_.press(hotkey);
    EXPECT_NE(this->giveBack(), noErr);
  }
}

using X11HotkeysTest = HotkeysContract<RealHotkeys>;

TEST_F(X11HotkeysTest, APressIsOneEventWhateverLocksAreOnAndHoweverLongItIsHeld) {
  constexpr unsigned kLocks[] = {66, 77};
  ASSERT_EQ(take(kBackslash, 7), noErr);
  repeatKeysFast(world_.others());
  for (const unsigned lock : kLocks) {
    world_.others().press(lock);
    const int before = world_.keyPresses();
    world_.hold(kBackslash);
    EXPECT_TRUE(await([&] { return world_.keyPresses() >= before + 5; }));
    world_.release(kBackslash);
  }
  world_.press(kBackslash);
  EXPECT_TRUE(await([&] { return presses_.size() >= 3; }));
  EXPECT_EQ(presses_, std::vector<unsigned>({7, 7, 7}));
  for (const unsigned lock : kLocks) world_.others().press(lock);
  layOut("us");
}

TEST_F(X11HotkeysTest, TheHotkeyStaysWhereItIsWhenTheKeyboardChanges) {
  ASSERT_EQ(take(kBackslash, 7), noErr);
  layOut("fr");  // has the backslash on the key of the 8
  world_.press(kBackslash);
  EXPECT_TRUE(await([&] { return presses_.size() == 1; }));
  moveSuperToMod3(world_.others());
  EXPECT_TRUE(await([&] {
    const bool isFree = grabKey(world_.others(), 51, kMod3);
    if (isFree) ungrabKey(world_.others(), 51, kMod3);
    return !isFree;
  }));
  EXPECT_TRUE(world_.isFree(kBackslash));  // that is, Mod4 with it
  world_.press(kBackslash);
  EXPECT_TRUE(await([&] { return presses_.size() == 2; }));
  layOut("us");
}

TEST_F(X11HotkeysTest, WhatTheKeyboardDoesNotHaveAndWhatIsHeldAlreadyIsRefused) {
  EXPECT_EQ(take({0x0A, cmdKey}, 1), paramErr);
  EXPECT_EQ(take({kVK_Space, 1}, 1), paramErr);
  OtherClient others;
  ASSERT_TRUE(grabKey(others, 65, kMod4 | 16));  // one variant of it, the one with NumLock
  EXPECT_EQ(take({kVK_Space, cmdKey}, 1), eventHotKeyExistsErr);
  EXPECT_TRUE(world_.isFree({kVK_Space, cmdKey}));
  ASSERT_EQ(take(kBackslash, 1), noErr);
  const auto first = ref_;
  EXPECT_EQ(take(kBackslash, 2), eventHotKeyExistsErr);
  EXPECT_EQ(world_.manager().UnregisterEventHotKey(*first), noErr);
}

}  // namespace
}  // namespace norvane
