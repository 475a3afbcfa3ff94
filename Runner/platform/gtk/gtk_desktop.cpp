#include "platform/gtk/gtk_desktop.h"

#include <algorithm>
#include <utility>

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include "platform/gtk/desktop_window.h"
#include "platform/gtk/main_screen.h"
#include "platform/linux/process.h"
#include "platform/ns_window.h"
#include "platform/platform.h"

namespace norvane {
namespace {

/// The window that has the keyboard. While another client holds a grab it still does: a hotkey is
/// such a grab, and is no loss of the keyboard.
::Window inputFocus() {
  ::Window focus = 0;
  int revertTo = 0;
  XGetInputFocus(GDK_DISPLAY_XDISPLAY(gdk_display_get_default()), &focus, &revertTo);
  return focus;
}

}  // namespace

/// Hears, on the root window, that another window became the active one.
struct GtkDesktop::Watch {
  explicit Watch(GtkDesktop& owner) : desktop(owner) {
    gdk_window_set_events(
        root, static_cast<GdkEventMask>(gdk_window_get_events(root) | GDK_PROPERTY_CHANGE_MASK));
    gdk_window_add_filter(root, &Watch::filter, this);
  }
  ~Watch() { gdk_window_remove_filter(root, &Watch::filter, this); }
  Watch(const Watch&) = delete;

  static GdkFilterReturn filter(GdkXEvent* event, GdkEvent*, gpointer self) {
    static const Atom activeWindow = gdk_x11_get_xatom_by_name("_NET_ACTIVE_WINDOW");
    const auto* xEvent = static_cast<XEvent*>(event);
    if (xEvent->type == PropertyNotify && xEvent->xproperty.atom == activeWindow) {
      static_cast<Watch*>(self)->desktop.updateKeyWindow();
    }
    return GDK_FILTER_CONTINUE;
  }

  GtkDesktop& desktop;
  GdkWindow* const root = gdk_get_default_root_window();
};

GtkDesktop::GtkDesktop(Dispatch& dispatch, EventTime& eventTime, std::function<void()> quit)
    : dispatch_(dispatch),
      eventTime_(eventTime),
      quit_(std::move(quit)),
      activeWindowWatch_(std::make_unique<Watch>(*this)) {}

GtkDesktop::~GtkDesktop() = default;

void GtkDesktop::launch(const MainInterface& mainInterface, bool takesKeyboard) {
  NSApplication& application = platform().application;
  application.setDelegate(mainInterface.makeDelegate());
  const auto window = mainInterface.makeMainWindow();
  window->awakeFromNib();
  if (takesKeyboard) {
    window->makeKeyAndOrderFront();
  } else {
    window->orderFront();
  }
  application.delegate()->applicationDidFinishLaunching();
}

void GtkDesktop::openURL(const std::string& url) {
  NSAppleEventDescriptor event;
  event.setParamDescriptor(NSAppleEventDescriptor(url), keyDirectObject);
  platform().application.appleEventManager().dispatchEvent(kInternetEventClass, kAEGetURL, event);
}

void GtkDesktop::reopen() {
  const bool hasVisibleWindows = hasVisibleMainWindow();
  activateIgnoringOtherApps();
  platform().application.delegate()->applicationShouldHandleReopen(hasVisibleWindows);
}

void GtkDesktop::personCloses(const std::weak_ptr<NSWindow>& weakWindow) {
  dispatch_.mainAsync([this, weakWindow] {
    const auto window = weakWindow.lock();
    if (!window) return;
    window->close();
    if (hasVisibleMainWindow()) return;
    if (platform().application.delegate()->applicationShouldTerminateAfterLastWindowClosed()) {
      quit_();
    }
  });
}

bool GtkDesktop::hasVisibleMainWindow() const {
  return std::ranges::any_of(windows_, [](const DesktopWindow* window) {
    return window->isVisible() && window->owner().canBecomeMainWindow();
  });
}

// Asked of the server rather than told by the toolkit, which reports each grab as a loss of focus.
void GtkDesktop::updateKeyWindow() {
  const ::Window focus = inputFocus();
  const auto found = std::ranges::find_if(
      windows_, [&](const DesktopWindow* window) { return window->contains(focus); });
  DesktopWindow* const now = found == windows_.end() ? nullptr : *found;
  DesktopWindow* const before = std::exchange(keyWindow_, now);
  if (!before || before == now) return;
  dispatch_.mainAsync([this, weakWindow = before->owner().weak_from_this()] {
    const auto resigned = weakWindow.lock();
    // One that has the keyboard again by now has nothing to hear.
    if (resigned && !isKey(*resigned)) resigned->didResignKey();
  });
}

bool GtkDesktop::isKey(const NSWindow& window) const {
  return keyWindow_ && &keyWindow_->owner() == &window;
}

std::unique_ptr<NativeWindow> GtkDesktop::makeWindow(NSWindow& window, const NSRect& contentRect,
                                                     NSWindowStyleMask styleMask) {
  return std::make_unique<DesktopWindow>(*this, window, contentRect, styleMask);
}

// X has no application that could come to the front: its visible main window does.
void GtkDesktop::activateIgnoringOtherApps() {
  for (DesktopWindow* window : windows_) {
    if (!window->isVisible() || !window->owner().canBecomeMainWindow()) continue;
    window->makeKeyAndOrderFront();
    return;
  }
}

std::optional<NSRect> GtkDesktop::mainScreenVisibleFrame() const {
  const auto screen = mainScreen();
  if (!screen) return std::nullopt;
  return screen->toPoints(screen->workArea);
}

std::optional<std::string> GtkDesktop::environment(const std::string& name) const {
  return environmentVariable(name);
}

NSOperatingSystemVersion GtkDesktop::operatingSystemVersion() const { return {14, 0, 0}; }

}  // namespace norvane
