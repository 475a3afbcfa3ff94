#include "platform/gtk/gtk_desktop.h"

#include <algorithm>

#include <gdk/gdkx.h>

#include "platform/gtk/desktop_window.h"
#include "platform/gtk/primary_screen.h"
#include "platform/linux/process.h"
#include "platform/ns_window.h"
#include "platform/x11/x11_focus.h"
#include "platform/x11/x11_properties.h"

namespace norvane {
namespace {

bool isAnotherActiveWindow(const XEvent& event) {
  static const Atom activeWindow = gdk_x11_get_xatom_by_name("_NET_ACTIVE_WINDOW");
  return event.type == PropertyNotify && event.xproperty.atom == activeWindow;
}

}  // namespace

GtkDesktop::GtkDesktop(NSApplication& application, Dispatch& dispatch, EventTime& eventTime,
                       WindowUi& ui)
    : application_(application),
      dispatch_(dispatch),
      eventTime_(eventTime),
      ui_(ui),
      activeWindowWatch_([this](const XEvent& event) {
        if (isAnotherActiveWindow(event)) updateKeyWindow();
        return false;
      }) {
  hearOfRootProperties();
  g_signal_connect(gdk_screen_get_default(), "monitors-changed",
                   G_CALLBACK(+[](GdkScreen*, GtkDesktop* self) {
                     for (DesktopWindow* window : self->windows_) window->screensChanged();
                   }),
                   this);
}

GtkDesktop::~GtkDesktop() { g_signal_handlers_disconnect_by_data(gdk_screen_get_default(), this); }

void GtkDesktop::launch(const MainInterface& mainInterface, bool takesKeyboard) {
  application_.launch(mainInterface, [&] {
    const auto window = application_.loadMainWindow(mainInterface);
    if (takesKeyboard) {
      window->makeKeyAndOrderFront();
    } else {
      window->orderFront();
    }
  });
}

void GtkDesktop::personCloses(const std::weak_ptr<NSWindow>& weakWindow) {
  dispatch_.mainAsync([this, weakWindow] {
    if (const auto window = weakWindow.lock()) application_.closeWindow(*window);
  });
}

void GtkDesktop::updateKeyWindow() {
  GdkWindow* const focus = ownWindow(xFocus());
  const auto found = std::ranges::find_if(
      windows_, [&](const DesktopWindow* window) { return window->contains(focus); });
  application_.setKeyWindow(found == windows_.end() ? nullptr : &(*found)->owner());
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
  const auto primary = primaryScreen();
  if (!primary) return std::nullopt;
  return primary->visibleAreaOf(screenInUse());
}

std::optional<std::string> GtkDesktop::environment(const std::string& name) const {
  return environmentVariable(name);
}

NSOperatingSystemVersion GtkDesktop::operatingSystemVersion() const { return {14, 0, 0}; }

}  // namespace norvane
