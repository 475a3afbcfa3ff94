#pragma once

#include <functional>

#include "platform/linux/glib_handles.h"
#include "platform/session/status_item_content.h"

struct _GtkStatusIcon;
struct _GtkWidget;

namespace norvane {

/// A status item as a window that the panel takes in, for panels without a watcher on the bus. Seen
/// only while there is such a panel. Main thread.
class XembedStatusIcon {
 public:
  /// `content` must outlive this object. `clicked` is called at each plain click with the time of
  /// the event, and may destroy this.
  XembedStatusIcon(const StatusItemContent& content, std::function<void(unsigned time)> clicked);
  XembedStatusIcon(const XembedStatusIcon&) = delete;
  ~XembedStatusIcon();

  void show(const StatusItemContent& content);

 private:
  std::function<void(unsigned)> clicked_;
  GObjectPtr<_GtkStatusIcon> icon_;
  _GtkWidget* menu_;
};

}  // namespace norvane
