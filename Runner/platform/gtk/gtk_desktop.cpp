#include "platform/gtk/gtk_desktop.h"

#include <algorithm>
#include <utility>

#include <gdk/gdkx.h>

#include "platform/gtk/desktop_window.h"
#include "platform/gtk/main_screen.h"
#include "platform/linux/process.h"
#include "platform/ns_window.h"
#include "platform/platform.h"
#include "platform/x11/x11_focus.h"
#include "platform/x11/x11_properties.h"

namespace norvane {
namespace {

bool isAnotherActiveWindow(const XEvent& event) {
  static const Atom activeWindow = gdk_x11_get_xatom_by_name("_NET_ACTIVE_WINDOW");
  return event.type == PropertyNotify && event.xproperty.atom == activeWindow;
}

}  // namespace

GtkDesktop::GtkDesktop(Dispatch& dispatch, EventTime& eventTime, std::function<void()> quit)
    : dispatch_(dispatch),
      eventTime_(eventTime),
      quit_(std::move(quit)),
      activeWindowWatch_([this](const XEvent& event) {
        if (isAnotherActiveWindow(event)) updateKeyWindow();
        return false;
      }) {
  hearOfRootProperties();
}

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

void GtkDesktop::updateKeyWindow() {
  GdkWindow* const focus = ownWindow(xFocus());
  const auto found = std::ranges::find_if(
      windows_, [&](const DesktopWindow* window) { return window->contains(focus); });
  setKeyWindow(found == windows_.end() ? nullptr : *found);
}

void GtkDesktop::setKeyWindow(DesktopWindow* window) {
  DesktopWindow* const before = std::exchange(keyWindow_, window);
  if (!before || before == window) return;
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
