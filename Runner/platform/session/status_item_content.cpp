#include "platform/session/status_item_content.h"

#include "base/utf8.h"

namespace norvane {

const std::string& StatusItemContent::name() const {
  static const std::string kApplication = "Norvane";
  return title.empty() ? kApplication : title;
}

std::string StatusItemContent::templateIcon() const {
  if (!image || !image->isTemplate()) return {};
  return isWellFormedUtf8(image->name()) ? image->name() : std::string();  // the bus takes no other
}

Pixbuf StatusItemContent::pixels(int side) const {
  if (!image) return title.empty() ? Pixbuf() : drawText(title, side);
  Pixbuf scaled = Pixbuf::make(side, side);
  if (scaled && image->pixels()) scaled.draw(image->pixels());
  return scaled;
}

}  // namespace norvane
