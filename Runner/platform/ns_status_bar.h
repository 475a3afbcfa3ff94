#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/graphics.h"

namespace norvane {

inline constexpr double NSSquareStatusItemLength = -2;

/// What of a status item can be seen and clicked. Owned by its item. Nothing fails, and each call
/// replaces what the last one set: also where no panel shows the item, or only one that comes
/// later. Main thread.
class NSStatusBarButton {
 public:
  virtual ~NSStatusBarButton() = default;

  /// Of the platform's Graphics. One with an image may be shown without its title.
  virtual void setImage(std::shared_ptr<NSImage> image) = 0;
  /// In UTF-8; a few letters, which a panel of icons can draw.
  virtual void setTitle(const std::string& title) = 0;
  /// In UTF-8.
  virtual void setToolTip(const std::string& toolTip) = 0;
  /// Called on the main thread at each click; it may let the item go.
  virtual void setAction(std::function<void()> action) = 0;
};

/// One item of the system's status bar, there for as long as the object is. Main thread.
class NSStatusItem {
 public:
  virtual ~NSStatusItem() = default;
  /// The same at each call; null when the status bar gives the item none.
  virtual NSStatusBarButton* button() = 0;
};

/// The system's status bar. Main thread.
class NSStatusBar {
 public:
  virtual ~NSStatusBar() = default;
  /// A new item, empty, never null; it must not outlive the bar. `length` in points, or
  /// NSSquareStatusItemLength, where panels leave a choice. The host has one: of several, some
  /// desktops show the last.
  virtual std::unique_ptr<NSStatusItem> statusItemWithLength(double length) = 0;
};

}  // namespace norvane
