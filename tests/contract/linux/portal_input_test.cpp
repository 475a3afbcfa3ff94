// Hotkeys and idle time of a Wayland session, whose programs on the bus are played here.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gio/gio.h>

#include "contract.h"
#include "platform/gtk/hotkeys.h"
#include "platform/session/session.h"
#include "platform/x11/event_time.h"
#include "platform/x11/idle_time.h"
#include "real_desktop.h"
#include "simulated_worlds.h"

namespace norvane {
namespace {

const std::string kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSession = "/org/freedesktop/portal/desktop/session/its/own";
constexpr const char* kKeys = "SHIFT+LOGO+backslash";
const std::string kAsked = "Register CreateSession BindShortcuts ";

/// The desktop's programs on the bus, and a person who decides at once or later. Calls come on the
/// thread that hears of them; what they leave here is settled when they are answered.
class Programs {
 public:
  Programs() : filter_(g_dbus_connection_add_filter(bus_.get(), hear, this, nullptr)) {
    for (const char* name : kNames) callBus("RequestName", g_variant_new("(su)", name, 0U));
  }
  ~Programs() {
    for (const char* name : kNames) callBus("ReleaseName", g_variant_new("(s)", name));
    g_dbus_connection_remove_filter(bus_.get(), filter_);
  }

  unsigned decision = 0;
  const char* key = "Any key";  // for the shortcut
  bool isKde = false;           // shortcuts are taken with the session, and binding gives none
  std::string slow;             // the call that waits for `decide`
  std::atomic<bool> isAwaited = false;
  guint64 idle = 0;
  std::string calls;

  void decide() {
    g_dbus_connection_emit_signal(
        bus_.get(), nullptr, request_.c_str(), "org.freedesktop.portal.Request", "Response",
        g_variant_new_parsed("(%u, {'session_handle': <%s>, 'shortcuts': "
                             "<[(%s, {'trigger_description': <%s>})]>})",
                             decision, kSession, gives_ ? kKeys : "another", key),
        nullptr);
  }
  void activate(const char* session) {
    g_dbus_connection_emit_signal(
        bus_.get(), nullptr, kPath.c_str(), "org.freedesktop.portal.GlobalShortcuts", "Activated",
        g_variant_new("(osta{sv})", session, kKeys, guint64{5}, nullptr), nullptr);
  }

 private:
  static constexpr const char* kNames[] = {"org.freedesktop.portal.Desktop",
                                           "org.gnome.Mutter.IdleMonitor"};
  void callBus(const char* method, GVariant* arguments) {
    const GVariantPtr done(g_dbus_connection_call_sync(
        bus_.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus", method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  }
  static GDBusMessage* hear(GDBusConnection* bus, GDBusMessage* message, gboolean incoming,
                            gpointer self) {
    const auto type = g_dbus_message_get_message_type(message);
    if (!incoming || type != G_DBUS_MESSAGE_TYPE_METHOD_CALL) return message;
    const GObjectPtr<GDBusMessage> call(message);
    const GObjectPtr<GDBusMessage> reply(g_dbus_message_new_method_reply(message));
    g_dbus_message_set_body(reply.get(), static_cast<Programs*>(self)->answer(message));
    g_dbus_connection_send_message(bus, reply.get(), {}, nullptr, nullptr);
    return nullptr;
  }
  GVariant* answer(GDBusMessage* call) {
    const std::string method = g_dbus_message_get_member(call);
    if (method == "GetIdletime") return g_variant_new("(t)", idle);
    calls += method + " ";
    if (method == "Register" || method == "Close") return g_variant_new("()");
    const GTextPtr printed(g_variant_print(g_dbus_message_get_body(call), FALSE));
    const std::string arguments = printed.get();
    const auto after = [&](const std::string& text) {
      const auto start = arguments.find(text) + text.size();
      return arguments.substr(start, arguments.find('\'', start) - start);
    };
    const bool binds = method == "BindShortcuts";
    if (binds) activate("/somebody/else");
    EXPECT_EQ(after("'preferred_trigger': <'"), kKeys) << arguments;
    EXPECT_TRUE(binds || after("'session_handle_token': <'") == "norvane") << arguments;
    gives_ = binds != isKde;
    request_ = g_dbus_message_get_sender(call) + 1;
    std::ranges::replace(request_, '.', '_');
    request_ = kPath + "/request/" + request_ + "/" + after("'handle_token': <'");
    isAwaited = method == slow;
    if (!isAwaited) decide();
    return g_variant_new("(o)", request_.c_str());
  }

  std::string request_;
  bool gives_ = false;
  GObjectPtr<GDBusConnection> bus_ = sessionBus();
  guint filter_;
};

struct Wayland {
  ~Wayland() { ::unsetenv("XDG_SESSION_TYPE"); }

  SimulatedInput simulated;
  const int isWayland = ::setenv("XDG_SESSION_TYPE", "wayland", 1);
  EventTime time;
  int answers = 0;
  std::unique_ptr<CarbonEventManager> sessionHotkeys =
      makeHotkeys(time, simulated.dispatch, [this] { ++answers; });
  CarbonEventManager& hotkeys = *sessionHotkeys;
  IdleTime idle;
};
using WaylandInput = InputContract<Wayland>;
constexpr Hotkey kShortcut{kVK_ANSI_Backslash, cmdKey | shiftKey};

TEST_F(WaylandInput, AHotkeyIsHeldOnceTheDesktopSaysSoUntilItIsGivenBack) {
  Programs desktop;
  ASSERT_EQ(take(kShortcut), noErr);
  EXPECT_EQ(std::exchange(desktop.calls, {}), kAsked);
  while (g_main_context_iteration(nullptr, FALSE)) continue;
  EXPECT_TRUE(presses.empty());
  desktop.activate(kSession);
  EXPECT_TRUE(await([&] { return presses.size() == 1; }));
  EXPECT_EQ(hotkeys.UnregisterEventHotKey(*ref), noErr);
  // A desktop that asks nobody can be told of one combination after another.
  desktop.isKde = true;
  desktop.key = "";
  for (int i = 0; i < 2; ++i) EXPECT_EQ(take(kShortcut), eventHotKeyExistsErr);
  desktop.decision = 2;
  EXPECT_EQ(take(kShortcut), eventInternalErr);
  EXPECT_NE(simulated.log.last.find("CreateSession was refused (2)"), std::string::npos);
  const std::string made = "Close Register CreateSession ";
  EXPECT_EQ(desktop.calls, made + made + made);
}

TEST_F(WaylandInput, NobodyIsAskedAboutOneCombinationAfterAnother) {
  const auto turn = [&] {
    bool turned = false;
    simulated.dispatch.mainAsync([&] { turned = true; });
    EXPECT_TRUE(await([&] { return turned; }));
  };
  for (int i = 0; i < 8; ++i) EXPECT_EQ(take(kShortcut), eventInternalErr);  // there is no portal
  EXPECT_EQ(simulated.log.records, 1);
  Programs desktop;
  std::string before;
  for (const char* call : {"CreateSession", "BindShortcuts"}) {  // by the portal, by the person
    turn();
    desktop.slow = call;
    bool turned = false;
    simulated.dispatch.mainAsync([&] { turned = true; });
    for (int i = 0; i < 8; ++i) EXPECT_EQ(take(kShortcut), eventInternalErr);
    EXPECT_FALSE(turned);  // the wait let nothing run
    EXPECT_TRUE(await([&] { return desktop.isAwaited.exchange(false); }));
    desktop.decide();  // after all
    EXPECT_TRUE(await([&] { return simulated.log.last.find("Any key") != std::string::npos; }));
    desktop.activate(kSession);
    EXPECT_TRUE(await([&] { return !std::exchange(presses, {}).empty(); }));
    EXPECT_EQ(std::exchange(desktop.calls, {}), before + kAsked);
    before = "Close ";
  }
  EXPECT_EQ(answers, 1);
  turn();
  desktop.slow.clear();
  desktop.key = "";
  EXPECT_EQ(take(kShortcut), eventHotKeyExistsErr);
  EXPECT_EQ(take(kShortcut), eventInternalErr);
  EXPECT_EQ(desktop.calls, before + kAsked);
}

TEST_F(WaylandInput, TheDesktopTellsTheIdleTimeAndElseTheApplicationsOwnInputCounts) {
  EXPECT_GT(idle.secondsSinceLastEventType(kCGEventMouseMoved), 0);
  Programs desktop;
  // One that says 0 at all times is not believed.
  EXPECT_GT(idle.secondsSinceLastEventType(kCGEventMouseMoved), 0);
  desktop.idle = 60500;
  EXPECT_EQ(idle.secondsSinceLastEventType(kCGEventMouseMoved), 60.5);
}

}  // namespace
}  // namespace norvane
