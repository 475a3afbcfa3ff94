#pragma once

#include <memory>
#include <string>

#include "platform/linux/pixbuf_graphics.h"

namespace norvane {

/// What a status item shows, as the host set it.
struct StatusItemContent {
  std::shared_ptr<PixbufImage> image;
  std::string title;
  std::string toolTip;

  /// What the application is called where a name is needed and the item has no title.
  const std::string& name() const;
  /// The icon whose colour is the status bar's to choose: the path of a file, or a name in the icon
  /// theme. Empty when there is none.
  std::string templateIcon() const;
  /// The picture, or the title drawn, `side` pixels wide and high; empty when there is neither.
  Pixbuf pixels(int side) const;
};

}  // namespace norvane
