#include "platform/x11/x11_focus.h"

#include <X11/Xlib.h>
#include <gdk/gdkx.h>

namespace norvane {

XWindow xFocus() {
  XWindow window = None;
  int revertTo = 0;
  XGetInputFocus(gdk_x11_get_default_xdisplay(), &window, &revertTo);
  return window == PointerRoot ? None : window;
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
