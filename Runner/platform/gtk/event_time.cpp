#include "platform/gtk/event_time.h"

#include <gdk/gdkx.h>

namespace norvane {

namespace {

std::uint32_t serverTime() {
  GdkWindow* root = gdk_get_default_root_window();
  // The answer comes as a change of a property, for which nobody would wait without this.
  gdk_window_set_events(
      root, static_cast<GdkEventMask>(gdk_window_get_events(root) | GDK_PROPERTY_CHANGE_MASK));
  return gdk_x11_get_server_time(root);
}

}  // namespace

void EventTime::happened() { last_ = serverTime(); }

std::uint32_t EventTime::last() const { return last_ != 0 ? last_ : serverTime(); }

}  // namespace norvane
