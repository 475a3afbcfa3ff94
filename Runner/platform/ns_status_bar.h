#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/graphics.h"

namespace norvane {

inline constexpr double NSSquareStatusItemLength = -2;

/// What of a status item can be seen and clicked. Owned by its item. Main thread.
class NSStatusBarButton {
 public:
  virtual ~NSStatusBarButton() = default;

  virtual void setImage(std::shared_ptr<NSImage> image) = 0;
  virtual void setTitle(const std::string& title) = 0;
  virtual void setToolTip(const std::string& toolTip) = 0;
  /// Called on the main thread at each click.
  virtual void setAction(std::function<void()> action) = 0;
};

/// One item of the system's status bar, there for as long as the object is. Main thread.
class NSStatusItem {
 public:
  virtual ~NSStatusItem() = default;
  /// Null when the status bar gives the item none.
  virtual NSStatusBarButton* button() = 0;
};

class NSStatusBar {
 public:
  virtual ~NSStatusBar() = default;
  /// `length` in points, or NSSquareStatusItemLength.
  virtual std::unique_ptr<NSStatusItem> statusItemWithLength(double length) = 0;
};

}  // namespace norvane
