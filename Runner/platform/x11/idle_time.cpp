#include "platform/x11/idle_time.h"

#include <algorithm>
#include <optional>
#include <string>

#include <X11/extensions/XInput2.h>
#include <X11/extensions/scrnsaver.h>
#include <gdk/gdkx.h>

#include "platform/log.h"
#include "platform/session/session.h"

namespace norvane {
namespace {

using Seconds = std::chrono::duration<double>;

std::optional<double> idleOfServer() {
  Display* display = gdk_x11_get_default_xdisplay();
  int event = 0;
  int error = 0;
  if (isWaylandSession() || !XScreenSaverQueryExtension(display, &event, &error)) {
    return std::nullopt;
  }
  XScreenSaverInfo info;
  if (!XScreenSaverQueryInfo(display, gdk_x11_get_default_root_xwindow(), &info)) {
    return std::nullopt;
  }
  return static_cast<double>(info.idle) / 1000;
}

bool isInput(const XEvent& event) {
  if (event.type == KeyPress) return true;  // a grabbed key
  const int type = inputEventType(event);
  return type == XI_KeyPress || type == XI_ButtonPress || type == XI_Motion;
}

}  // namespace

/// A method on the session bus that tells the idle time.
class IdleTime::BusSource {
 public:
  BusSource(const char* name, const char* path, const char* method, double unitsASecond)
      : name_(name), path_(path), method_(method), unitsASecond_(unitsASecond) {}

  std::optional<double> ask() {
    constexpr int kPatience = 250;  // milliseconds
    if (!bus_) bus_ = sessionBus();
    if (hangs_ || !bus_) return std::nullopt;
    GError* error = nullptr;
    const GVariantPtr reply(
        g_dbus_connection_call_sync(bus_.get(), name_, path_, name_, method_, nullptr, nullptr,
                                    G_DBUS_CALL_FLAGS_NO_AUTO_START, kPatience, nullptr, &error));
    const GErrorPtr failure(error);
    if (!reply) {
      hangs_ = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
      if (hangs_) NSLog(std::string("[Norvane] not asked for the idle time again: ") + name_);
      return std::nullopt;
    }
    guint64 units = 0;
    if (g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(t)"))) {
      g_variant_get(reply.get(), "(t)", &units);
    } else if (g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(u)"))) {
      guint32 narrow = 0;
      g_variant_get(reply.get(), "(u)", &narrow);
      units = narrow;
    }
    // Desktops that cannot tell say 0 at all times.
    counts_ = counts_ || units > 0;
    if (!counts_) return std::nullopt;
    return static_cast<double>(units) / unitsASecond_;
  }

 private:
  GObjectPtr<GDBusConnection> bus_;
  const char* name_;
  const char* path_;
  const char* method_;
  double unitsASecond_;
  bool counts_ = false;
  bool hangs_ = false;
};

IdleTime::IdleTime()
    : filter_([this](const XEvent& event) {
        if (isInput(event)) lastSeen_ = Clock::now();
        return false;
      }),
      idleMonitor_(std::make_unique<BusSource>("org.gnome.Mutter.IdleMonitor",
                                               "/org/gnome/Mutter/IdleMonitor/Core", "GetIdletime",
                                               1000)),
      screenSaver_(std::make_unique<BusSource>(
          "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "GetSessionIdleTime", 1)) {
}

IdleTime::~IdleTime() = default;

double IdleTime::secondsSinceLastEventType(CGEventType /*type*/) const {
  if (const auto idle = idleOfServer()) return *idle;
  if (const auto idle = idleMonitor_->ask()) return *idle;
  const double atMost = Seconds(Clock::now() - lastSeen_).count();
  // Some screen savers count in another unit than they should; none is idle for longer than this.
  return std::min(screenSaver_->ask().value_or(atMost), atMost);
}

}  // namespace norvane
