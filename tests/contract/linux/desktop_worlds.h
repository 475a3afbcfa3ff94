// The worlds of the real Linux desktop: GTK on X11, with other programs beside it.

#pragma once

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/gtk/gtk_graphics.h"
#include "platform/gtk/gtk_pasteboard.h"
#include "platform/gtk/gtk_platform.h"
#include "platform/gtk/gtk_status_bar.h"
#include "platform/gtk/primary_screen.h"
#include "platform/linux/glib_handles.h"
#include "platform/session/autostart_entry.h"
#include "platform/session/secret_service_keychain.h"
#include "platform/ui/played_ui.h"
#include "platform/x11/event_time.h"
#include "platform/x11/idle_time.h"
#include "platform/x11/x11_hotkeys.h"
#include "platform/x11/x11_keyboard.h"
#include "platform/x11/x11_properties.h"
#include "platform/x11/x11_workspace.h"
#include "real_desktop.h"
#include "simulated_worlds.h"

// Xlib's macros come after everything that they would break.
// clang-format off
#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
// clang-format on

namespace norvane {

/// A combination in the X server's terms, on an evdev keyboard.
struct XCombination {
  XCombination(unsigned xKey, unsigned xModifiers) : key(xKey), modifiers(xModifiers) {}
  XCombination(const Hotkey& hotkey)
      : key(std::map<unsigned, unsigned>{
            {kVK_ANSI_Backslash, 51}, {kVK_ANSI_O, 32}, {kVK_Space, 65}}
                .at(hotkey.key)) {
    for (const auto& [carbon, mask, keyCode] :
         {std::array<unsigned, 3>{controlKey, ControlMask, 37},
          {optionKey, Mod1Mask, 64},
          {cmdKey, Mod4Mask, 133},
          {shiftKey, ShiftMask, 50}}) {
      if ((hotkey.modifiers & carbon) == 0) continue;
      modifiers |= mask;
      modifierKeys.push_back(keyCode);
    }
  }

  unsigned key;
  unsigned modifiers = 0;
  std::vector<unsigned> modifierKeys;  ///< those that a person presses
};

/// An X server's desktop with a window of ours, which has a text field and the focus, and the
/// layouts "ru" and "us".
struct DesktopInput {
  DesktopInput() {
    layOut("ru,us");
    XkbSetAutoRepeatRate(x, XkbUseCoreKbd, 20000, 1000);  // none but where a test wants it
    gtk_container_add(GTK_CONTAINER(window), field);
    gtk_widget_show_all(window);
    EXPECT_TRUE(awaitFocus());
  }
  ~DesktopInput() {
    gtk_widget_destroy(window);
    layOut("us");
  }

  bool isFree(XCombination combination) {
    combination.modifiers |= LockMask;
    const bool isFree = othersTake(combination);
    XUngrabKey(x, static_cast<int>(combination.key), AnyModifier, DefaultRootWindow(x));
    XSync(x, False);
    return isFree;
  }
  void press(const XCombination& combination) {
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
  bool othersTake(const XCombination& combination) {
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
    time.set(0);  // some window managers refuse who cannot name a recent event of the person's
    gtk_window_present_with_time(GTK_WINDOW(window), time.last());
    return await([this] { return gtk_window_is_active(GTK_WINDOW(window)); });
  }

  SimulatedInput simulated;  // for its log and queue
  OtherClient others;
  Display* x = others.display();
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* field = gtk_entry_new();
  EventTime time;
  static inline bool grabFails = false;
  int keyPresses = 0;  // repetitions included
  const X11EventFilter filter{[this](const XEvent& event) {
    keyPresses += inputEventType(event) == XI_KeyPress ? 1 : 0;
    return false;
  }};
  X11Hotkeys hotkeys{time, simulated.dispatch};
  X11Keyboard keyboard;
  IdleTime idle;
};

class DesktopPasteboard {
 public:
  GtkPasteboard pasteboard;

  /// What xclip gets; nothing when it gets a refusal.
  std::optional<std::string> read(const std::string& type) {
    const char* target = type == NSPasteboardTypeString ? "UTF8_STRING" : type.c_str();
    return outputOf({"xclip", "-selection", "clipboard", "-o", "-t", target});
  }
};

struct DesktopServices {
  GlibDispatch dispatch;
  SecretServiceKeychain keychain{dispatch};
  const std::filesystem::path autostart =
      std::filesystem::path(g_get_user_config_dir()) / "autostart";
  const std::filesystem::path entry = autostart / "cn.kestrio.norvane.desktop";
  AutostartEntry loginItem{"/opt/Norvane.app/Norvane"};
  ~DesktopServices() {
    keychain.SecItemDelete(kAny);
    std::filesystem::remove_all(autostart);
  }
};

class DesktopStatusBar {
 public:
  static constexpr const char* kKey = "dialog-password-symbolic";
  GtkGraphics graphics{""};
  NSStatusBar& statusBar() { return bar_; }
  /// Empty when no item announces itself to a panel that has just come up.
  std::string announcedItem() {
    return outputOf({"/usr/bin/python3", NORVANE_TOOLS "/other_application.py", "item"})
        .value_or("");
  }
  std::string seen() {
    return call("org.freedesktop.DBus.Properties.GetAll", {"org.kde.StatusNotifierItem"});
  }
  bool click() { return !call("org.kde.StatusNotifierItem.Activate", {"3", "4"}).empty(); }
  std::string menu() {
    return call("com.canonical.dbusmenu.GetLayout", {"0", "2", "[]"}, "/StatusNotifierItem/Menu");
  }
  void choose(const char* item) {
    call("com.canonical.dbusmenu.Event", {item, "clicked", "<0>", "0"}, "/StatusNotifierItem/Menu");
  }
  std::vector<std::string> chosen;

 private:
  /// Empty when the item does not answer.
  std::string call(const char* method, std::vector<const char*> arguments,
                   const char* path = "/StatusNotifierItem") {
    if (item_.empty()) item_ = announcedItem();
    arguments.insert(arguments.begin(),
                     {"env", "LC_ALL=C.UTF-8", "gdbus", "call", "--session", "--dest",
                      item_.c_str(), "--object-path", path, "--method", method});
    return outputOf(arguments).value_or("");
  }
  EventTime eventTime_;
  GtkStatusBar bar_{eventTime_,
                    {{"Show Norvane", [this] { chosen.emplace_back("show"); }},
                     {"Quit", [this] { chosen.emplace_back("quit"); }}}};
  std::string item_;
};

struct DesktopWindows : WindowsWorld {
  PlayedUi ui;
  GtkPlatform host{directory, dispatch, ui, [] {}};
  DesktopWindows() { host.eventTime.set(0); }  // the person has just asked for them

  static GtkWindow* shownWindow() {
    const std::unique_ptr<GList, Deleter<g_list_free>> all(gtk_window_list_toplevels());
    for (GList* each = all.get(); each; each = each->next) {
      if (gtk_widget_get_mapped(GTK_WIDGET(each->data))) return GTK_WINDOW(each->data);
    }
    return nullptr;
  }

  /// What the X server says of the window.
  static NSRect onScreen(const NSWindow&) {
    Display* const display = gdk_x11_get_default_xdisplay();
    const XWindow window = gdk_x11_window_get_xid(gtk_widget_get_window(GTK_WIDGET(shownWindow())));
    XWindowAttributes client{};
    XGetWindowAttributes(display, window, &client);
    int x = 0;
    int y = 0;
    XWindow child = 0;
    XTranslateCoordinates(display, window, client.root, 0, 0, &x, &y, &child);
    if (client.map_state != IsViewable) return {};
    const GdkRectangle around = decoration();
    return primaryScreen()->toPoints(
        {x - around.x, y - around.y, client.width + around.width, client.height + around.height});
  }
  /// What is left of and above the client, and in all.
  static GdkRectangle decoration() {
    const auto extents =
        xNumbers(gdk_x11_window_get_xid(gtk_widget_get_window(GTK_WIDGET(shownWindow()))),
                 "_NET_FRAME_EXTENTS", 4);
    if (extents.size() != 4) return {};  // not every window manager says that there is none
    const auto side = [&](int which) { return static_cast<int>(extents[which]); };
    return {side(0), side(2), side(0) + side(1), side(2) + side(3)};
  }
  static void maximise() {
    gtk_window_maximize(shownWindow());
    EXPECT_TRUE(await([] { return gtk_window_is_maximized(shownWindow()); }));
  }
};

inline void end(GSubprocess* process) {
  g_subprocess_force_exit(process);
  g_subprocess_wait(process, nullptr, nullptr);
  g_object_unref(process);
}
using OtherProcess = std::unique_ptr<GSubprocess, Deleter<end>>;
using OwnWindow = std::unique_ptr<GtkWidget, Deleter<gtk_widget_destroy>>;

inline OwnWindow ownWindow(bool isPanel) {
  OwnWindow window(gtk_window_new(GTK_WINDOW_TOPLEVEL));
  gtk_window_set_skip_taskbar_hint(GTK_WINDOW(window.get()), isPanel);
  gtk_widget_show(window.get());
  EventTime now;
  now.set(0);
  gtk_window_present_with_time(GTK_WINDOW(window.get()), now.last());
  return window;
}

class DesktopWorkspace {
 public:
  DesktopWorkspace() {
    EventTime().last();  // from now on changes of the root window's properties turn the main loop
    // The windows of the test before this may not be gone yet.
    EXPECT_TRUE(await([&] { return front(workspace_) == "none"; }));
  }
  NSWorkspace& workspace() { return workspace_; }

  void open(const Profile::Application& application) {
    const auto& id = application.bundleIdentifier;
    if (id) {
      const std::filesystem::path data = std::getenv("XDG_DATA_HOME");
      std::filesystem::create_directories(data / "applications");
      std::ofstream(data / "applications" / (*id + ".desktop"))
          << "[Desktop Entry]\nType=Application\nExec=true\nIcon=accessories-calculator\n"
          << "StartupWMClass=Class\nName=" << *application.name;
    }
    programs_.emplace_back(g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, "/usr/bin/python3",
                                            NORVANE_TOOLS "/other_application.py", "window",
                                            id ? "Class" : application.name->c_str(), nullptr));
    awaitInFront(*application.name);
  }
  void openOwn() {
    own_ = ownWindow(false);
    awaitInFront("Norvane");
  }

 private:
  void awaitInFront(const std::string& name) {
    EXPECT_TRUE(await([&] { return front(workspace_).ends_with(' ' + name); })) << name;
  }
  X11Workspace workspace_{kOwn};
  std::vector<OtherProcess> programs_;
  OwnWindow own_;
};

}  // namespace norvane
