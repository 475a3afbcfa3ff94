// Hotkeys on a Wayland session: the desktop portal's side is played here.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include <gtest/gtest.h>

#include "bus_service.h"
#include "platform/gtk/event_time.h"
#include "platform/gtk/glib_handles.h"
#include "platform/gtk/hot_key_handler.h"
#include "platform/gtk/hotkeys.h"
#include "platform/headless/headless_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "real_desktop.h"

namespace norvane {
namespace {

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kShortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* kSession = "/org/freedesktop/portal/desktop/session/its/own";

/// A portal whose person decides as told.
class Portal {
 public:
  enum Decision { agrees, givesNoKey, refuses, hesitates };

  std::atomic<Decision> person = agrees;

  void activate(const char* session) {
    service_.emit(kPath, kShortcuts, "Activated",
                  g_variant_new("(osta{sv})", session, "any", guint64{5}, nullptr));
  }
  /// The methods that were called since the last time, and the keys that were asked for.
  std::string takeCalls() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
  }

 private:
  void called(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation) {
    const std::lock_guard lock(mutex_);
    calls_ += method + " ";
    if (method == "Close") {
      g_dbus_method_invocation_return_value(invocation, nullptr);
      return;
    }
    const gsize last = g_variant_n_children(arguments) - 1;
    const GVariantPtr options(g_variant_get_child_value(arguments, last));
    const char* token = nullptr;
    g_variant_lookup(options.get(), "handle_token", "&s", &token);
    std::string sender = g_dbus_method_invocation_get_sender(invocation) + 1;
    std::ranges::replace(sender, '.', '_');
    const std::string request = std::string(kPath) + "/request/" + sender + "/" + token;
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", request.c_str()));

    GVariantDict results;
    g_variant_dict_init(&results, nullptr);
    if (method == "CreateSession") {
      g_variant_dict_insert(&results, "session_handle", "s", kSession);
    } else {
      const GVariantPtr shortcuts(g_variant_get_child_value(arguments, 1));
      const char* id = nullptr;
      GVariant* properties = nullptr;
      g_variant_get_child(shortcuts.get(), 0, "(&s@a{sv})", &id, &properties);
      const GVariantPtr owner(properties);
      const char* trigger = nullptr;
      g_variant_lookup(properties, "preferred_trigger", "&s", &trigger);
      calls_ += std::string(trigger) + " ";
      GVariantDict given;
      g_variant_dict_init(&given, nullptr);
      g_variant_dict_insert(&given, "trigger_description", "s", person == givesNoKey ? "" : "Any");
      GVariant* shortcut = g_variant_new("(s@a{sv})", id, g_variant_dict_end(&given));
      g_variant_dict_insert_value(&results, "shortcuts",
                                  g_variant_new_array(nullptr, &shortcut, 1));
    }
    GVariant* response = g_variant_ref_sink(
        g_variant_new("(u@a{sv})", person == refuses ? 1U : 0U, g_variant_dict_end(&results)));
    const bool answers = person != hesitates || method == "CreateSession";
    if (answers) {
      service_.emit(request, "org.freedesktop.portal.Request", "Response", response);
    }
    g_variant_unref(response);
  }

  std::mutex mutex_;
  std::string calls_;
  BusService service_{
      "org.freedesktop.portal.Desktop",
      {{kPath,
        "<interface name='org.freedesktop.portal.GlobalShortcuts'>"
        "<method name='CreateSession'><arg type='a{sv}'/><arg type='o' direction='out'/></method>"
        "<method name='BindShortcuts'><arg type='o'/><arg type='a(sa{sv})'/><arg type='s'/>"
        "<arg type='a{sv}'/><arg type='o' direction='out'/></method></interface>"},
       {kSession,
        "<interface name='org.freedesktop.portal.Session'><method name='Close'/></interface>"}},
      [this](const auto&... call) { called(call...); }};
};

class CountingLog : public Log {
 public:
  void write(std::string_view) override { ++records; }
  int records = 0;
};

class ShortcutsPortal : public testing::Test {
 protected:
  ShortcutsPortal() {
    ::setenv("XDG_SESSION_TYPE", "wayland", 1);
    hotkeys_ = makeHotkeys(time_, dispatch_);
    ::unsetenv("XDG_SESSION_TYPE");
    std::optional<EventHandlerRef> handler;
    const auto pressed = [this](const CarbonEvent&) { return ++presses_, noErr; };
    hotkeys_->InstallEventHandler(pressed, {kEventClassKeyboard, kEventHotKeyPressed}, handler);
  }
  OSStatus take() {
    return hotkeys_->RegisterEventHotKey(kVK_ANSI_Backslash, cmdKey | shiftKey, {1, 1}, ref_);
  }
  void turn() {
    bool turned = false;
    dispatch_.mainAsync([&] { turned = true; });
    ASSERT_TRUE(await([&] { return turned; }));
  }

  CountingLog log_;
  GlibDispatch dispatch_;
  HeadlessPlatform host_{{}, std::string(std::getenv("HOME")), dispatch_, log_, [] {}};
  EventTime time_;
  std::unique_ptr<CarbonEventManager> hotkeys_;
  std::optional<EventHotKeyRef> ref_;
  int presses_ = 0;
};

const std::string kBound = "CreateSession BindShortcuts SHIFT+LOGO+backslash ";

TEST_F(ShortcutsPortal, AHotkeyIsHeldOnceTheDesktopSaysSoUntilItIsGivenBack) {
  Portal portal;
  ASSERT_EQ(take(), noErr);
  EXPECT_EQ(portal.takeCalls(), kBound);
  EXPECT_EQ(take(), eventHotKeyExistsErr);
  portal.activate("/somebody/else");
  portal.activate(kSession);
  EXPECT_EQ(presses_, 0);
  EXPECT_TRUE(await([&] { return presses_ > 0; }));
  turn();
  EXPECT_EQ(presses_, 1);
  EXPECT_EQ(hotkeys_->UnregisterEventHotKey(*ref_), noErr);
  EXPECT_NE(hotkeys_->UnregisterEventHotKey(*ref_), noErr);

  portal.person = Portal::givesNoKey;
  EXPECT_EQ(take(), eventHotKeyExistsErr);
  portal.person = Portal::refuses;
  EXPECT_EQ(take(), eventInternalErr);
  EXPECT_EQ(portal.takeCalls(), "Close " + kBound + "Close CreateSession ");
}

TEST_F(ShortcutsPortal, NobodyIsAskedAboutOneCombinationAfterAnother) {
  for (int i = 0; i < 8; ++i) EXPECT_EQ(take(), eventInternalErr);  // there is no portal
  EXPECT_EQ(log_.records, 1);

  Portal portal;
  portal.person = Portal::hesitates;
  turn();
  const auto start = std::chrono::steady_clock::now();
  dispatch_.mainAsync([&] { EXPECT_GT(log_.records, 1); });  // waits for the registration to end
  EXPECT_EQ(take(), eventInternalErr);
  EXPECT_EQ(take(), eventInternalErr);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
  EXPECT_EQ(portal.takeCalls(), kBound);
  portal.activate(kSession);  // the person has agreed after all
  EXPECT_TRUE(await([&] { return presses_ == 1; }));

  portal.person = Portal::agrees;
  EXPECT_EQ(take(), noErr);
  EXPECT_EQ(portal.takeCalls(), "Close " + kBound);
}

}  // namespace
}  // namespace norvane
