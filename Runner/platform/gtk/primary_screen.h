#pragma once

#include <optional>

#include <gdk/gdk.h>

#include "platform/geometry.h"

namespace norvane {

/// The main screen, and the way between the toolkit's rectangles (from the top left of all screens)
/// and the host's (from the bottom left of the main one). Main thread.
struct MainScreen {
  GdkRectangle geometry;
  GdkRectangle workArea;  ///< without panels and docks

  NSRect toPoints(const GdkRectangle& rectangle) const;
  GdkRectangle fromPoints(const NSRect& rectangle) const;
  /// Of the screen that `frame` lies on, or is nearest to.
  NSRect visibleAreaNear(const NSRect& frame) const;
};

/// Nothing when no screen is attached.
std::optional<MainScreen> mainScreen();

}  // namespace norvane
