#pragma once

#include <functional>
#include <string>

#include "platform/linux/glib_handles.h"
#include "platform/session/status_item_content.h"

struct _BusNotifierWatcher;
struct _DbusmenuServer;
struct _GCancellable;
struct _GDBusConnection;
struct _GDBusMethodInvocation;

namespace norvane {

/// A status item on the session bus, in the protocol of KDE that most panels speak: announced to
/// the watcher whenever one appears, its menu by way of dbusmenu. Main thread.
class StatusNotifierItem {
 public:
  /// `content` must outlive this object. `clicked` is called at each plain click, and may destroy
  /// it; `shownChanged`, in a later turn, says whether a watcher has the item: false when there is
  /// no watcher or no bus.
  StatusNotifierItem(const StatusItemContent& content, std::function<void()> clicked,
                     std::function<void(bool shown)> shownChanged);
  ~StatusNotifierItem();
  StatusNotifierItem(const StatusNotifierItem&) = delete;

  // What of the content is another now
  void imageChanged();
  void titleChanged();
  void toolTipChanged();

 private:
  struct Bus;  // GDBus's callbacks

  void serve(_GDBusConnection* connection);
  void announce();
  GVariant* property(const std::string& name) const;
  void call(const std::string& method, _GDBusMethodInvocation* invocation);
  void signal(const char* name);

  const StatusItemContent& content_;
  std::function<void()> clicked_;
  std::function<void(bool)> shownChanged_;
  std::string busName_;
  GObjectPtr<_GCancellable> cancellable_;
  GObjectPtr<_GDBusConnection> connection_;  // null until it is there
  GObjectPtr<_DbusmenuServer> menu_;         // as well
  GObjectPtr<_BusNotifierWatcher> watcher_;  // as well
  unsigned ownedName_ = 0;
  unsigned object_ = 0;
};

}  // namespace norvane
