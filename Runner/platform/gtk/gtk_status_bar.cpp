#include "platform/gtk/gtk_status_bar.h"

#include <optional>
#include <utility>

#include "platform/gtk/drawn_text.h"
#include "platform/gtk/xembed_status_icon.h"
#include "platform/session/status_notifier_item.h"

namespace norvane {
namespace {

class GtkStatusItem : public NSStatusItem, public NSStatusBarButton {
 public:
  GtkStatusItem(EventTime& eventTime, StatusMenu menu)
      : eventTime_(eventTime),
        content_{.menu = std::move(menu), .drawText = &drawnText},
        // The bus brings no time with a click; without one the server's own is taken.
        notifier_(
            content_, [this] { clicked(0); }, [this](bool shown) { shownChanged(shown); }) {}

  NSStatusBarButton* button() override { return this; }
  void setImage(std::shared_ptr<NSImage> image) override {
    content_.image = std::dynamic_pointer_cast<PixbufImage>(image);
    notifier_.imageChanged();
    updateFallback();
  }
  void setTitle(const std::string& title) override {
    content_.title = title;
    notifier_.titleChanged();
    updateFallback();
  }
  void setToolTip(const std::string& toolTip) override {
    content_.toolTip = toolTip;
    notifier_.toolTipChanged();
    updateFallback();
  }
  void setAction(std::function<void()> action) override { action_ = std::move(action); }

 private:
  void shownChanged(bool shown) {
    if (shown) {
      fallback_.reset();
    } else if (!fallback_) {
      fallback_.emplace(content_, [this](unsigned time) { clicked(time); });
    }
  }
  void updateFallback() {
    if (fallback_) fallback_->show(content_);
  }
  void clicked(unsigned time) {
    eventTime_.set(time);
    const auto action = action_;  // a copy: it may destroy the item
    if (action) action();
  }

  EventTime& eventTime_;
  StatusItemContent content_;
  std::function<void()> action_;
  StatusNotifierItem notifier_;
  std::optional<XembedStatusIcon> fallback_;
};

}  // namespace

std::unique_ptr<NSStatusItem> GtkStatusBar::statusItemWithLength(double /*length*/) {
  return std::make_unique<GtkStatusItem>(eventTime_, menu_);
}

}  // namespace norvane
