// The simulated desktop's worlds.

#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <glib.h>
#include <gtest/gtest.h>

#include "contract.h"
#include "platform/headless/headless_keychain.h"
#include "platform/headless/headless_platform.h"
#include "platform/headless/headless_services.h"
#include "platform/headless/headless_status_bar.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/stderr_log.h"
#include "platform/log.h"
#include "platform/ns_window.h"

namespace norvane {

struct CountingLog : Log {
  void write(std::string_view text) override { ++records, last = text; }
  int records = 0;
  std::string last;
};

struct SimulatedInput {
  GlibDispatch dispatch;
  CountingLog log;
  const ScopedLog installedLog{log};
  HeadlessPlatform host{{}, std::getenv("HOME"), dispatch, [] {}};
  CarbonEventManager& hotkeys = host.hotkeys;
  KeyboardInput& keyboard = host.keyboard;
  CGEventSource& idle = host.eventSource;

  bool othersTake(const Combination& combination) {
    host.profile.change([&](Profile& profile) { profile.takenHotkeys = {combination.hotkey}; });
    return true;
  }
  bool isFree(const Combination& combination) {
    return host.hotkeys.registered() != combination.hotkey;
  }
  void press(const Combination& combination) {
    host.eventSource.input(kCGEventKeyDown);
    host.hotkeys.press(combination.hotkey);
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

struct SimulatedServices {
  LiveProfile profile{Profile()};
  HeadlessKeychain keychain{g_get_user_runtime_dir(), profile};
  HeadlessAppService loginItem{g_get_user_runtime_dir(), profile};
  ~SimulatedServices() { keychain.SecItemDelete(kAny); }
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

/// A host of its own, in a data directory of its own.
struct WindowsWorld {
  WindowsWorld() { EXPECT_TRUE(::mkdtemp(directory.data())); }
  ~WindowsWorld() { std::filesystem::remove_all(directory); }

  std::string directory = "/tmp/norvane-windows-XXXXXX";
  GlibDispatch dispatch;
  StderrLog log;
  const ScopedLog installedLog{log};
};

struct SimulatedWindows : WindowsWorld {
  HeadlessPlatform host{Profile{}, directory, dispatch, [] {}};

  static NSRect onScreen(const NSWindow& window) { return window.frame(); }
  static void maximise() {}
};

class SimulatedWorkspace {
 public:
  SimulatedWorkspace() { platform_.setProfile(Profile{.applications = {}}); }
  NSWorkspace& workspace() { return platform_.desktop; }
  void open(Profile::Application application) {
    application.active = true;
    platform_.desktop.launchApplication(application);
  }
  void openOwn() { platform_.desktop.activateIgnoringOtherApps(); }

 private:
  GlibDispatch dispatch_;
  StderrLog log_;
  const ScopedLog installedLog_{log_};
  HeadlessPlatform platform_{{}, std::getenv("HOME"), dispatch_, [] {}};
};

}  // namespace norvane
