#pragma once

namespace norvane {

/// Points; the origin of the desktop is the bottom left of its primary screen, y grows upwards.
struct NSPoint {
  double x = 0;
  double y = 0;
  bool operator==(const NSPoint&) const = default;
};

/// Points.
struct NSSize {
  double width = 0;
  double height = 0;
  bool operator==(const NSSize&) const = default;
};

/// A window's or a screen's frame; `origin` is its bottom-left corner.
struct NSRect {
  NSPoint origin;
  NSSize size;
  bool operator==(const NSRect&) const = default;

  double midX() const { return origin.x + size.width / 2; }
  double midY() const { return origin.y + size.height / 2; }
};

}  // namespace norvane
