#pragma once

#include <optional>

#include <gdk/gdk.h>

#include "platform/geometry.h"

namespace norvane {

/// The primary screen, and the way between the toolkit's rectangles (from the top left of all
/// screens) and the host's (from the bottom left of the primary one). Main thread.
struct PrimaryScreen {
  GdkRectangle geometry;

  NSRect toPoints(const GdkRectangle& rectangle) const;
  GdkRectangle fromPoints(const NSRect& rectangle) const;
  /// A screen without panels and docks.
  NSRect visibleAreaOf(GdkMonitor* screen) const;
  /// That of the screen that `frame` lies on, or is nearest to.
  NSRect visibleAreaNear(const NSRect& frame) const;
  /// Whether the middle of the upper edge, by which a person moves a window, is on a screen.
  bool isInSight(const NSRect& frame) const;
};

/// Nothing when no screen is attached.
std::optional<PrimaryScreen> primaryScreen();

/// The one with the window in front, or else with the pointer: where the person works. Null when no
/// screen is attached.
GdkMonitor* screenInUse();

}  // namespace norvane
