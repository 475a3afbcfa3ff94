#include "platform/gtk/primary_screen.h"

#include <cmath>

#include <gdk/gdkx.h>

#include "platform/linux/glib_handles.h"
#include "platform/x11/x11_focus.h"
#include "platform/x11/x11_properties.h"

namespace norvane {

NSRect PrimaryScreen::toPoints(const GdkRectangle& rectangle) const {
  const int bottom = geometry.y + geometry.height;
  return {{static_cast<double>(rectangle.x - geometry.x),
           static_cast<double>(bottom - rectangle.y - rectangle.height)},
          {static_cast<double>(rectangle.width), static_cast<double>(rectangle.height)}};
}

GdkRectangle PrimaryScreen::fromPoints(const NSRect& rectangle) const {
  const double bottom = geometry.y + geometry.height;
  const auto width = static_cast<int>(std::lround(rectangle.size.width));
  const auto height = static_cast<int>(std::lround(rectangle.size.height));
  return {static_cast<int>(std::lround(geometry.x + rectangle.origin.x)),
          static_cast<int>(std::lround(bottom - rectangle.origin.y)) - height, width, height};
}

NSRect PrimaryScreen::visibleAreaOf(GdkMonitor* screen) const {
  GdkRectangle area;
  gdk_monitor_get_workarea(screen, &area);
  return toPoints(area);
}

NSRect PrimaryScreen::visibleAreaNear(const NSRect& frame) const {
  const GdkRectangle place = fromPoints(frame);
  return visibleAreaOf(gdk_display_get_monitor_at_point(
      gdk_display_get_default(), place.x + place.width / 2, place.y + place.height / 2));
}

bool PrimaryScreen::isInSight(const NSRect& frame) const {
  const GdkRectangle place = fromPoints(frame);
  const int x = place.x + place.width / 2;
  GdkRectangle nearest;
  gdk_monitor_get_geometry(gdk_display_get_monitor_at_point(gdk_display_get_default(), x, place.y),
                           &nearest);
  return x >= nearest.x && x < nearest.x + nearest.width && place.y >= nearest.y &&
         place.y < nearest.y + nearest.height;
}

std::optional<PrimaryScreen> primaryScreen() {
  GdkDisplay* display = gdk_display_get_default();
  GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
  if (!monitor) monitor = gdk_display_get_monitor(display, 0);
  if (!monitor) return std::nullopt;
  PrimaryScreen screen;
  gdk_monitor_get_geometry(monitor, &screen.geometry);
  return screen;
}

GdkMonitor* screenInUse() {
  GdkDisplay* const display = gdk_display_get_default();
  const XErrorsForgiven forgiven;
  const XWindow front = xActiveWindow();
  // That of the desktop's background is as large as all screens together.
  if (front != 0 && !xHasAtom(front, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DESKTOP")) {
    const GObjectPtr<GdkWindow> window(gdk_x11_window_foreign_new_for_display(display, front));
    if (window) return gdk_display_get_monitor_at_window(display, window.get());
  }
  int x = 0;
  int y = 0;
  gdk_device_get_position(gdk_seat_get_pointer(gdk_display_get_default_seat(display)), nullptr, &x,
                          &y);
  return gdk_display_get_monitor_at_point(display, x, y);
}

}  // namespace norvane
