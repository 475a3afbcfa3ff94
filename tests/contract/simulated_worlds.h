// The simulated desktop's worlds, which need no display.

#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include "contract.h"
#include "platform/headless/headless_graphics.h"
#include "platform/headless/headless_keychain.h"
#include "platform/headless/headless_platform.h"
#include "platform/headless/headless_services.h"
#include "platform/headless/headless_status_bar.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/stderr_log.h"
#include "platform/log.h"
#include "platform/ns_window.h"

namespace norvane {

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

/// A data directory of its own.
struct OwnDirectory {
  OwnDirectory() { EXPECT_TRUE(::mkdtemp(directory.data())); }
  ~OwnDirectory() { std::filesystem::remove_all(directory); }

  std::string directory = "/tmp/norvane-contract-XXXXXX";
};

struct CountingLog : Log {
  void write(std::string_view text) override { ++records, last = text; }
  int records = 0;
  std::string last;
};

struct SimulatedInput : OwnDirectory {
  GlibDispatch dispatch;
  CountingLog log;
  const ScopedLog installedLog{log};
  HeadlessPlatform host{{}, directory, dispatch, [] {}};
  CarbonEventManager& hotkeys = host.hotkeys;
  KeyboardInput& keyboard = host.keyboard;
  CGEventSource& idle = host.eventSource;

  bool othersTake(const Hotkey& combination) {
    host.profile.change([&](Profile& profile) { profile.takenHotkeys = {combination}; });
    return true;
  }
  bool isFree(const Hotkey& combination) { return host.hotkeys.registered() != combination; }
  void press(const Hotkey& combination) {
    host.eventSource.input(kCGEventKeyDown);
    host.hotkeys.press(combination);
  }
  bool isSecret() { return host.keyboard.isSecure(); }
  bool isLatin() { return host.keyboard.inputSource() == "com.example.keylayout.ABC"; }
};

class SimulatedPasteboard {
 public:
  HeadlessPasteboard pasteboard;

  std::optional<std::string> read(const std::string& type) {
    for (const auto& item : pasteboard.items()) {
      for (const auto& [itemType, text] : item.types()) {
        if (itemType == type) return text;
      }
    }
    return std::nullopt;
  }
};

struct SimulatedServices : OwnDirectory {
  LiveProfile profile{Profile()};
  HeadlessKeychain keychain{directory, profile};
  HeadlessAppService loginItem{directory, profile};
};

class SimulatedStatusBar {
 public:
  static constexpr const char* kKey = "key.fill";
  const LiveProfile profile{Profile()};
  HeadlessGraphics graphics{profile};
  NSStatusBar& statusBar() { return bar_; }
  std::string seen() {
    const auto* item = bar_.item();
    return (item->image ? item->image->name() : "") + item->title + item->toolTip;
  }
  bool click() { return bar_.click(); }

 private:
  HeadlessStatusBar bar_;
};

/// What a host of its own needs.
struct WindowsWorld : OwnDirectory {
  GlibDispatch dispatch;
  StderrLog log;
  const ScopedLog installedLog{log};
};

struct SimulatedWindows : WindowsWorld {
  HeadlessPlatform host{Profile{}, directory, dispatch, [] {}};

  static NSRect onScreen(const NSWindow& window) { return window.frame(); }
  static void maximise() {}
};

class SimulatedWorkspace : WindowsWorld {
 public:
  SimulatedWorkspace() { platform_.setProfile(Profile{.applications = {}}); }
  NSWorkspace& workspace() { return platform_.desktop; }
  void open(Profile::Application application) {
    application.active = true;
    platform_.desktop.launchApplication(application);
  }
  void openOwn() { platform_.desktop.activateIgnoringOtherApps(); }

 private:
  HeadlessPlatform platform_{{}, directory, dispatch, [] {}};
};

}  // namespace norvane
