#include "platform/x11/event_time.h"

#include <gdk/gdkx.h>

#include "platform/x11/x11_properties.h"

namespace norvane {
namespace {

std::uint32_t serverTime() {
  // The answer comes as a change of a property, for which nobody would wait without this.
  hearOfRootProperties();
  return gdk_x11_get_server_time(gdk_get_default_root_window());
}

}  // namespace

void EventTime::set(std::uint32_t time) { last_ = time != 0 ? time : serverTime(); }

std::uint32_t EventTime::last() const {
  const std::uint32_t inWindows = gdk_x11_display_get_user_time(gdk_display_get_default());
  // The clock wraps round every seven weeks.
  const bool isLater = static_cast<std::int32_t>(inWindows - last_) > 0;
  const std::uint32_t later = last_ == 0 || (inWindows != 0 && isLater) ? inWindows : last_;
  return later != 0 ? later : serverTime();
}

}  // namespace norvane
