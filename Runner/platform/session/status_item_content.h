#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/pixbuf_graphics.h"

namespace norvane {

struct StatusMenuItem {
  std::string label;
  std::function<void()> action;
};
using StatusMenu = std::vector<StatusMenuItem>;

/// What a status item shows, as the host set it, and its menu, which does not change.
struct StatusItemContent {
  std::shared_ptr<PixbufImage> image;
  std::string title;
  std::string toolTip;
  StatusMenu menu;
  /// Draws a text on a square of that many pixels, for where there is no image.
  std::function<Pixbuf(const std::string& text, int side)> drawText;

  /// What the application is called where a name is needed and the item has no title.
  const std::string& name() const;
  /// The icon whose colour is the status bar's to choose: the path of a file, or a name in the icon
  /// theme. Empty when there is none.
  std::string templateIcon() const;
  /// The picture, or the title drawn, `side` pixels wide and high; empty when there is neither.
  Pixbuf pixels(int side) const;
};

}  // namespace norvane
