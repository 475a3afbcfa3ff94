#include "platform/headless/headless_status_bar.h"

#include <utility>

namespace norvane {
namespace {

class HeadlessStatusItem : public NSStatusItem, public NSStatusBarButton {
 public:
  explicit HeadlessStatusItem(std::shared_ptr<HeadlessStatusBar::Item> item)
      : item_(std::move(item)) {}

  NSStatusBarButton* button() override { return this; }
  void setImage(std::shared_ptr<NSImage> image) override {
    // The host has its images from this desktop's own graphics.
    item_->image = std::dynamic_pointer_cast<PixbufImage>(image);
  }
  void setTitle(const std::string& title) override { item_->title = title; }
  void setToolTip(const std::string& toolTip) override { item_->toolTip = toolTip; }
  void setAction(std::function<void()> action) override { item_->action = std::move(action); }

 private:
  std::shared_ptr<HeadlessStatusBar::Item> item_;
};

}  // namespace

bool HeadlessStatusBar::click() {
  const auto item = item_.lock();
  if (!item || !item->action) return false;
  item->action();
  return true;
}

std::unique_ptr<NSStatusItem> HeadlessStatusBar::statusItemWithLength(double /*length*/) {
  auto item = std::make_shared<Item>();
  item_ = item;
  return std::make_unique<HeadlessStatusItem>(std::move(item));
}

}  // namespace norvane
