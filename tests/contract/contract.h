// The words of the questions: what the suites ask with, and the worlds answer in. No platform's.

#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/carbon_events.h"
#include "platform/headless/profile.h"
#include "platform/keychain.h"
#include "platform/ns_pasteboard.h"
#include "platform/ns_window.h"
#include "platform/ns_workspace.h"

namespace norvane {

/// Turns the main loop until `condition` holds; false after ten seconds, which no healthy run
/// takes.
bool await(const std::function<bool()>& condition);

inline constexpr Hotkey kCmdBackslash{kVK_ANSI_Backslash, cmdKey};

/// Takes hotkeys and counts their presses.
template <class World>
class InputContract : public testing::Test, protected World {
 protected:
  InputContract() {
    std::optional<EventHandlerRef> handler;
    const auto pressed = [this](const CarbonEvent& event) {
      EventHotKeyID id;
      EXPECT_EQ(event.GetEventParameter(kEventParamDirectObject, typeEventHotKeyID, id), noErr);
      presses.push_back(id.id);
      return noErr;
    };
    this->hotkeys.InstallEventHandler(pressed, {kEventClassKeyboard, kEventHotKeyPressed}, handler);
  }
  OSStatus take(const Hotkey& combination, std::uint32_t id = 0) {
    ref.reset();
    return this->hotkeys.RegisterEventHotKey(combination.key, combination.modifiers, {1, id}, ref);
  }

  std::optional<EventHotKeyRef> ref;
  std::vector<unsigned> presses;
};

/// A window as people have them.
inline constexpr NSWindowStyleMask kOrdinary =
    NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskResizable;

struct Resignations : NSWindowDelegate {
  void windowDidResignKey(NSWindow&) override { ++count; }
  int count = 0;
};

inline constexpr const char* kConcealed = "org.nspasteboard.ConcealedType";

inline std::vector<NSPasteboardItem> oneItem(const std::string& text, bool isConcealed = true) {
  std::vector<NSPasteboardItem> items(1);
  items.front().setString(text, NSPasteboardTypeString);
  if (isConcealed) items.front().setString("", kConcealed);
  return items;
}

inline const KeychainQuery kAny{"org.example.contract", "session-key", {}};
inline const KeychainQuery kMine{"org.example.contract", "session-key", "TEAM.mine"};
inline const KeychainQuery kOther{"org.example.contract", "session-key", "TEAM.other"};
inline const std::vector<std::uint8_t> kFirst{1, 0, 0xFF, 0}, kSecond(32, 7);

inline bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

inline constexpr const char* kOwn = "cn.kestrio.norvane";
/// Of the applications whose identifiers the host asks for.
inline constexpr const char* kAskedFor = "com.1password.1password";

inline std::string front(const NSWorkspace& workspace) {
  const auto application = workspace.frontmostApplication();
  if (!application) return "none";
  return application->bundleIdentifier.value_or("-") + ' ' +
         application->localizedName.value_or("-");
}

inline bool runs(const NSWorkspace& workspace, const std::string& identifier) {
  const auto running = workspace.runningApplications();
  return std::ranges::count(running, identifier, &NSRunningApplication::bundleIdentifier) == 1;
}

}  // namespace norvane
