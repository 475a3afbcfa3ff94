#pragma once

#include <memory>
#include <utility>

#include "platform/ns_status_bar.h"
#include "platform/session/status_item_content.h"
#include "platform/x11/event_time.h"

namespace norvane {

/// The panel of the desktop: items by way of the session bus, or, while nobody there takes them, as
/// windows for the panel to take in. An item that no panel takes exists unseen.
class GtkStatusBar : public NSStatusBar {
 public:
  /// `eventTime` must outlive the items; a click sets it. `menu` comes up at a secondary click.
  GtkStatusBar(EventTime& eventTime, StatusMenu menu)
      : eventTime_(eventTime), menu_(std::move(menu)) {}

  /// Panels choose the length.
  std::unique_ptr<NSStatusItem> statusItemWithLength(double length) override;

 private:
  EventTime& eventTime_;
  StatusMenu menu_;
};

}  // namespace norvane
