#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/pixbuf_graphics.h"
#include "platform/ns_status_bar.h"

namespace norvane {

/// A status bar with room for one item.
class HeadlessStatusBar : public NSStatusBar {
 public:
  /// What the person sees of the item.
  struct Item {
    std::shared_ptr<PixbufImage> image;
    std::string title;
    std::string toolTip;
    std::function<void()> action;
  };

  /// The control side: null when there is no item.
  const Item* item() const { return item_.lock().get(); }
  /// False when there is nothing to click.
  bool click();

  std::unique_ptr<NSStatusItem> statusItemWithLength(double length) override;

 private:
  std::weak_ptr<Item> item_;
};

}  // namespace norvane
