#include "platform/x11/x11_focus.h"

#include <memory>

#include <X11/Xlib.h>
#include <gdk/gdkx.h>

#include "platform/linux/glib_handles.h"

namespace norvane {

XWindow xFocus() {
  XWindow window = None;
  int revertTo = 0;
  XGetInputFocus(gdk_x11_get_default_xdisplay(), &window, &revertTo);
  return window == PointerRoot ? None : window;
}

bool isWindowManaged() {
  const XWindow check = xNumber(gdk_x11_get_default_root_xwindow(), "_NET_SUPPORTING_WM_CHECK");
  return check != 0 && xNumber(check, "_NET_SUPPORTING_WM_CHECK") == check;
}

XWindow xActiveWindow() {
  const XWindow root = gdk_x11_get_default_root_xwindow();
  const auto attributesOf = [](XWindow window) {
    XWindowAttributes attributes{};
    XGetWindowAttributes(gdk_x11_get_default_xdisplay(), window, &attributes);
    return attributes;
  };
  const bool isManaged = isWindowManaged();
  if (isManaged) {
    // None is named for a moment while the keyboard goes from one window to the next. Openbox names
    // the last one still when it is gone and no other has come in its place.
    const XWindow active = xNumber(root, "_NET_ACTIVE_WINDOW");
    if (active != 0) return attributesOf(active).map_state == IsViewable ? active : 0;
  }
  XWindow window = xFocus();
  // It may be a part of the application's window.
  while (window != 0 && window != root && xText(window, "WM_CLASS").empty()) {
    window = family(window).parent;
  }
  if (window == 0 || window == root) return 0;
  // Window managers keep the keyboard that nobody has in a window of their own.
  return isManaged && attributesOf(window).override_redirect ? 0 : window;
}

WindowFamily family(XWindow window) {
  WindowFamily found;
  XWindow root = 0;
  XWindow* children = nullptr;
  unsigned count = 0;
  if (XQueryTree(gdk_x11_get_default_xdisplay(), window, &root, &found.parent, &children, &count) ==
      0) {
    return {};
  }
  const std::unique_ptr<XWindow, Deleter<XFree>> owned(children);
  found.children.assign(children, children + count);
  return found;
}

int masterKeyboard() {
  GdkSeat* seat = gdk_display_get_default_seat(gdk_display_get_default());
  return gdk_x11_device_get_id(gdk_seat_get_keyboard(seat));
}

// The toolkit's focus lies on a child of its window, under which it knows the window as well.
_GdkWindow* ownWindow(XWindow window) {
  GdkWindow* found = gdk_x11_window_lookup_for_display(gdk_display_get_default(), window);
  if (!found || gdk_window_get_window_type(found) == GDK_WINDOW_FOREIGN ||
      found == gdk_get_default_root_window()) {
    return nullptr;
  }
  return found;
}

}  // namespace norvane
