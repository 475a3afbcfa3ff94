#include "platform/gtk/main_screen.h"

#include <cmath>

namespace norvane {

NSRect MainScreen::toPoints(const GdkRectangle& rectangle) const {
  const int bottom = geometry.y + geometry.height;
  return {{static_cast<double>(rectangle.x - geometry.x),
           static_cast<double>(bottom - rectangle.y - rectangle.height)},
          {static_cast<double>(rectangle.width), static_cast<double>(rectangle.height)}};
}

GdkRectangle MainScreen::fromPoints(const NSRect& rectangle) const {
  const double bottom = geometry.y + geometry.height;
  const auto width = static_cast<int>(std::lround(rectangle.size.width));
  const auto height = static_cast<int>(std::lround(rectangle.size.height));
  return {static_cast<int>(std::lround(geometry.x + rectangle.origin.x)),
          static_cast<int>(std::lround(bottom - rectangle.origin.y)) - height, width, height};
}

NSRect MainScreen::visibleAreaNear(const NSRect& frame) const {
  const GdkRectangle place = fromPoints(frame);
  GdkMonitor* const nearest = gdk_display_get_monitor_at_point(
      gdk_display_get_default(), place.x + place.width / 2, place.y + place.height / 2);
  GdkRectangle area;
  gdk_monitor_get_workarea(nearest, &area);
  return toPoints(area);
}

std::optional<MainScreen> mainScreen() {
  GdkDisplay* display = gdk_display_get_default();
  GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
  if (!monitor) monitor = gdk_display_get_monitor(display, 0);
  if (!monitor) return std::nullopt;
  MainScreen screen;
  gdk_monitor_get_geometry(monitor, &screen.geometry);
  gdk_monitor_get_workarea(monitor, &screen.workArea);
  return screen;
}

}  // namespace norvane
