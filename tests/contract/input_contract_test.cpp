// Hotkeys, secure entry, layouts and idle time: the simulated ones, the X server's, and those of a
// Wayland session, whose programs on the bus are played here.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/gtk/hotkeys.h"
#include "platform/headless/headless_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/log.h"
#include "platform/session/session.h"
#include "platform/x11/idle_time.h"
#include "platform/x11/x11_focus.h"
#include "platform/x11/x11_hotkeys.h"
#include "platform/x11/x11_keyboard.h"
#include "platform/x11/x11_properties.h"
#include "real_desktop.h"

// Xlib's macros come after everything that they would break.
// clang-format off
#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <gtk/gtk.h>
// clang-format on

namespace norvane {
namespace {

/// A combination as the home system, the X server and a person's fingers know it.
struct Combination {
  Hotkey hotkey;
  unsigned key, modifiers;
  std::initializer_list<unsigned> modifierKeys;
};
const Combination kCmdBackslash{{42, 0x100}, 51, Mod4Mask, {133}};

struct CountingLog : Log {
  void write(std::string_view text) override { ++records, last = text; }
  int records = 0;
  std::string last;
};

/// The simulated desktop; of it the real worlds use the log.
struct Simulated {
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

bool grabFails = false;

/// An X server's desktop with a window of ours, which has a text field and the focus, and the
/// layouts "ru" and "us".
struct Real {
  Real() {
    layOut("ru,us");
    XkbSetAutoRepeatRate(x, XkbUseCoreKbd, 20000, 1000);  // none but where a test wants it
    gtk_container_add(GTK_CONTAINER(window), field);
    gtk_widget_show_all(window);
    EXPECT_TRUE(awaitFocus());
  }
  ~Real() {
    gtk_widget_destroy(window);
    layOut("us");
  }

  bool isFree(Combination combination) {
    combination.modifiers |= LockMask;
    const bool isFree = othersTake(combination);
    XUngrabKey(x, static_cast<int>(combination.key), AnyModifier, DefaultRootWindow(x));
    XSync(x, False);
    return isFree;
  }
  void press(const Combination& combination) {
    others.press(combination.key, combination.modifierKeys);
  }
  bool isSecret() {
    const int status =
        XGrabKeyboard(x, DefaultRootWindow(x), False, GrabModeAsync, GrabModeAsync, CurrentTime);
    XUngrabKeyboard(x, CurrentTime);
    XSync(x, False);
    return status == AlreadyGrabbed;
  }
  bool isLatin() {
    XkbStateRec state;
    XkbGetState(x, XkbUseCoreKbd, &state);
    return state.group == 1;
  }
  bool othersTake(const Combination& combination) {
    const auto previous =
        XSetErrorHandler([](Display*, XErrorEvent*) { return grabFails = true, 0; });
    grabFails = false;
    XGrabKey(x, static_cast<int>(combination.key), combination.modifiers, DefaultRootWindow(x),
             False, GrabModeAsync, GrabModeAsync);
    XSync(x, False);
    XSetErrorHandler(previous);
    return !grabFails;
  }
  /// By the arguments of setxkbmap.
  void layOut(const std::string& layouts, unsigned current = 0) {
    EXPECT_EQ(std::system(("setxkbmap -layout " + layouts).c_str()), 0);
    XkbLockGroup(x, XkbUseCoreKbd, current);
    XSync(x, False);
  }
  bool awaitFocus() {
    gtk_window_present(GTK_WINDOW(window));
    return await([this] { return gtk_window_is_active(GTK_WINDOW(window)); });
  }

  Simulated simulated;
  OtherClient others;
  Display* x = others.display();
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* field = gtk_entry_new();
  EventTime time;
  int keyPresses = 0;  // repetitions included
  const X11EventFilter filter{[this](const XEvent& event) {
    keyPresses += inputEventType(event) == XI_KeyPress ? 1 : 0;
    return false;
  }};
  X11Hotkeys hotkeys{time, simulated.dispatch};
  X11Keyboard keyboard;
  IdleTime idle;
};

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

using Worlds = testing::Types<Simulated, Real>;
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

using X11Input = InputContract<Real>;

TEST_F(X11Input, APressIsOneEventWhateverLocksAreOnAndHoweverLongItIsHeld) {
  constexpr unsigned kLocks[] = {66, 77};
  ASSERT_EQ(take(kCmdBackslash, 7), noErr);
  XkbSetAutoRepeatRate(x, XkbUseCoreKbd, 30, 10);
  for (const unsigned lock : kLocks) {
    others.press(lock);
    const int before = keyPresses;
    for (const unsigned key : {133, 51}) others.key(key, true);
    EXPECT_TRUE(await([&] { return keyPresses >= before + 5; }));
    for (const unsigned key : {133, 51}) others.key(key, false);  // as people do
  }
  XTestFakeButtonEvent(x, 1, True, CurrentTime);
  press(kCmdBackslash);
  XTestFakeButtonEvent(x, 1, False, CurrentTime);
  EXPECT_TRUE(await([&] { return presses.size() >= 3; }));
  EXPECT_EQ(presses, std::vector<unsigned>({7, 7, 7}));
  EXPECT_NE(time.last(), 0U);
  for (const unsigned lock : kLocks) others.press(lock);
}

TEST_F(X11Input, AHotkeyIsHeldWholeOrNotAtAllAndStaysOnItsKey) {
  const Combination moved{{}, 51, Mod3Mask, {}};
  ASSERT_TRUE(othersTake({{}, 51, Mod4Mask | Mod2Mask, {}}));  // with NumLock on
  EXPECT_EQ(take(kCmdBackslash), eventHotKeyExistsErr);
  EXPECT_TRUE(isFree(kCmdBackslash));
  EXPECT_EQ(take({{10, cmdKey}, 0, 0, {}}), paramErr);  // no such key here

  ASSERT_EQ(take(kCmdBackslash), noErr);
  EXPECT_EQ(take(kCmdBackslash), eventHotKeyExistsErr);
  // A layout with its backslash elsewhere, and the Super key on another modifier.
  layOut(
      "fr -print | sed 's/include \"pc+[^\"]*\"/& modifier_map Mod3 { Super_L };/' | "
      "xkbcomp - $DISPLAY 2>/dev/null");
  EXPECT_TRUE(await([&] { return !isFree(moved) && isFree(kCmdBackslash); }));
  press(kCmdBackslash);
  EXPECT_TRUE(await([&] { return presses.size() == 1; }));
}

TEST_F(X11Input, WhereTheWindowManagerKeepsSuperACombinationWithItIsTaken) {
  const std::string schemas = std::getenv("HOME");
  std::ofstream(schemas + "/mutter.gschema.xml")
      << "<schemalist><schema id='org.gnome.mutter' path='/org/gnome/mutter/'><key type='s' "
         "name='overlay-key'><default>'Super_L'</default></key></schema></schemalist>";
  ASSERT_EQ(std::system(("glib-compile-schemas " + schemas).c_str()), 0);
  ::setenv("GSETTINGS_SCHEMA_DIR", schemas.c_str(), 1);
  ::setenv("GSETTINGS_BACKEND", "memory", 1);
  const XWindow manager = xNumber(DefaultRootWindow(x), "_NET_SUPPORTING_WM_CHECK");
  const std::string name = xText(manager, "_NET_WM_NAME");
  const auto rename = [&](const std::string& to) {
    XChangeProperty(x, manager, XInternAtom(x, "_NET_WM_NAME", False),
                    XInternAtom(x, "UTF8_STRING", False), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(to.data()), static_cast<int>(to.size()));
    XSync(x, False);
  };
  rename("GNOME Shell");
  EXPECT_EQ(take(kCmdBackslash), eventHotKeyExistsErr);
  EXPECT_EQ(take({{49, 0x0A00}, 65, 0, {}}), noErr);
  const GObjectPtr<GSettings> settings(g_settings_new("org.gnome.mutter"));
  g_settings_set_string(settings.get(), "overlay-key", "");
  EXPECT_EQ(take(kCmdBackslash), noErr);
  rename(name);
}

TEST_F(X11Input, SecureEntryGoesWithTheFocusOfOurWindowsAndKeepsHotkeys) {
  keyboard.TISSelectInputSource(*keyboard.TISCopyCurrentASCIICapableKeyboardInputSource());
  keyboard.EnableSecureEventInput();
  ASSERT_EQ(take(kCmdBackslash), noErr);
  for (const Combination& key : {Combination{{}, 38, 0, {}}, kCmdBackslash}) press(key), press(key);
  EXPECT_TRUE(await([&] { return presses.size() >= 2; }));
  EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(field)), "aa");

  // As a menu does that opens and closes.
  GdkSeat* seat = gdk_display_get_default_seat(gdk_display_get_default());
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(gdk_seat_grab(seat, gtk_widget_get_window(window), GDK_SEAT_CAPABILITY_KEYBOARD, TRUE,
                            nullptr, nullptr, nullptr, nullptr),
              GDK_GRAB_SUCCESS);
    gdk_seat_ungrab(seat);
    gdk_display_sync(gdk_display_get_default());
    EXPECT_TRUE(await([&] { return isSecret(); }));
  }

  const Window neighbour = XCreateSimpleWindow(x, DefaultRootWindow(x), 0, 0, 80, 80, 0, 0, 0);
  XMapWindow(x, neighbour);
  EXPECT_TRUE(await([&] { return !isSecret(); }));

  // A press that hides the window, its key let go or held on in front of the neighbour.
  for (const int repetitions : {0, 9}) {
    if (repetitions > 0) XkbSetAutoRepeatRate(x, XkbUseCoreKbd, 30, 10);
    ASSERT_TRUE(awaitFocus() && await([&] { return isSecret(); }));
    presses.clear();
    for (const unsigned key : {133, 51}) others.key(key, true);
    EXPECT_TRUE(await([&] { return !presses.empty(); }));
    gtk_widget_hide(window);
    gdk_display_sync(gdk_display_get_default());
    const int enough = keyPresses + repetitions;
    EXPECT_TRUE(await([&] { return keyPresses >= enough; }));
    for (const unsigned key : {133, 51}) others.key(key, false);
    // The server sends no key anywhere until the window manager has chosen who gets them.
    EXPECT_TRUE(await([] { return xFocus() != 0; }));
    press(kCmdBackslash);
    EXPECT_TRUE(await([&] { return presses.size() >= 2; }));
    EXPECT_EQ(presses.size(), 2U);
  }
  keyboard.DisableSecureEventInput();
  EXPECT_TRUE(awaitFocus() && !isSecret());
}

TEST_F(X11Input, TheLatinLayoutInUseIsKeptAndWithoutOneThereIsNone) {
  layOut("us,de", 1);
  keyboard.TISSelectInputSource(*keyboard.TISCopyCurrentASCIICapableKeyboardInputSource());
  EXPECT_TRUE(isLatin());
  layOut("ru");
  EXPECT_FALSE(keyboard.TISCopyCurrentASCIICapableKeyboardInputSource());
}

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

  Simulated simulated;
  const int isWayland = ::setenv("XDG_SESSION_TYPE", "wayland", 1);
  EventTime time;
  int answers = 0;
  std::unique_ptr<CarbonEventManager> sessionHotkeys =
      makeHotkeys(time, simulated.dispatch, [this] { ++answers; });
  CarbonEventManager& hotkeys = *sessionHotkeys;
  IdleTime idle;
};
using WaylandInput = InputContract<Wayland>;
const Combination kShortcut{{kVK_ANSI_Backslash, cmdKey | shiftKey}, 0, 0, {}};

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
