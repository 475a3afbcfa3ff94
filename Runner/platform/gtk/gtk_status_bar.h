#pragma once

#include <memory>

#include "platform/ns_status_bar.h"
#include "platform/x11/event_time.h"

namespace norvane {

/// The panel of the desktop: items by way of the session bus, or, while nobody there takes them, as
/// windows for the panel to take in. An item that no panel takes exists unseen.
class GtkStatusBar : public NSStatusBar {
 public:
  /// `eventTime` must outlive the items; a click sets it.
  explicit GtkStatusBar(EventTime& eventTime) : eventTime_(eventTime) {}

  /// Panels choose the length.
  std::unique_ptr<NSStatusItem> statusItemWithLength(double length) override;

 private:
  EventTime& eventTime_;
};

}  // namespace norvane
