// The words of the questions: what the suites ask with, and the worlds answer in.

#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include "platform/carbon_events.h"
#include "platform/headless/headless_graphics.h"
#include "platform/headless/profile.h"
#include "platform/keychain.h"
#include "platform/linux/glib_handles.h"
#include "platform/ns_pasteboard.h"
#include "platform/ns_window.h"
#include "platform/ns_workspace.h"

namespace norvane {

/// A combination as the home system, the X server and a person's fingers know it.
struct Combination {
  Hotkey hotkey;
  unsigned key, modifiers;
  std::initializer_list<unsigned> modifierKeys;
};
inline const Combination kCmdBackslash{{42, 0x100}, 51, 1 << 6, {133}};

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
  OSStatus take(const Combination& combination, std::uint32_t id = 0) {
    ref.reset();
    return this->hotkeys.RegisterEventHotKey(combination.hotkey.key, combination.hotkey.modifiers,
                                             {1, id}, ref);
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

inline std::string front(const NSWorkspace& workspace) {
  const auto application = workspace.frontmostApplication();
  if (!application) return "none";
  return application->bundleIdentifier.value_or("-") + ' ' +
         application->localizedName.value_or("-");
}

/// The colour in the middle of the icon in front, as it reaches the UI.
inline std::uint32_t middleOfIcon(const NSWorkspace& workspace) {
  const auto bitmap = HeadlessGraphics(LiveProfile({})).makeBitmapImageRep(64);
  EXPECT_TRUE(bitmap->draw(*workspace.frontmostApplication().value().icon));
  const auto png = bitmap->pngRepresentation().value();
  const GObjectPtr<GInputStream> file(
      g_memory_input_stream_new_from_data(png.data(), static_cast<gssize>(png.size()), nullptr));
  const GObjectPtr<GdkPixbuf> icon(gdk_pixbuf_new_from_stream(file.get(), nullptr, nullptr));
  EXPECT_TRUE(gdk_pixbuf_get_width(icon.get()) == 64 && gdk_pixbuf_get_height(icon.get()) == 64);
  const guchar* rgba = gdk_pixbuf_read_pixels(icon.get()) + (32 * 64 + 32) * 4;
  return rgba[0] << 24U | rgba[1] << 16U | rgba[2] << 8U | rgba[3];
}

inline bool runs(const NSWorkspace& workspace, const std::string& identifier) {
  const auto running = workspace.runningApplications();
  return std::ranges::count(running, identifier, &NSRunningApplication::bundleIdentifier) == 1;
}

}  // namespace norvane
