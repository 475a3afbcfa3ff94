#include "platform/x11/idle_time.h"

#include <algorithm>
#include <optional>
#include <string>

#include <X11/extensions/XInput2.h>
#include <X11/extensions/scrnsaver.h>
#include <bus_interfaces.h>
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

constexpr const char* kIdleMonitor = "org.gnome.Mutter.IdleMonitor";
constexpr const char* kScreenSaver = "org.freedesktop.ScreenSaver";
constexpr int kPatience = 250;  // milliseconds
constexpr auto kForCalls = static_cast<GDBusProxyFlags>(
    G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS |
    G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START_AT_CONSTRUCTION);

double askIdleMonitor(GDBusConnection* bus, GError** error) {
  const GObjectPtr<BusIdleMonitor> monitor(bus_idle_monitor_proxy_new_sync(
      bus, kForCalls, kIdleMonitor, "/org/gnome/Mutter/IdleMonitor/Core", nullptr, error));
  guint64 milliseconds = 0;
  if (monitor) {
    bus_idle_monitor_call_get_idletime_sync(monitor.get(), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                            kPatience, &milliseconds, nullptr, error);
  }
  return static_cast<double>(milliseconds) / 1000;
}

double askScreenSaver(GDBusConnection* bus, GError** error) {
  const GObjectPtr<BusScreenSaver> saver(bus_screen_saver_proxy_new_sync(
      bus, kForCalls, kScreenSaver, "/org/freedesktop/ScreenSaver", nullptr, error));
  guint seconds = 0;
  if (saver) {
    bus_screen_saver_call_get_session_idle_time_sync(saver.get(), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                                     kPatience, &seconds, nullptr, error);
  }
  return seconds;
}

bool isInput(const XEvent& event) {
  if (event.type == KeyPress) return true;  // a grabbed key
  const int type = inputEventType(event);
  return type == XI_KeyPress || type == XI_ButtonPress || type == XI_Motion;
}

}  // namespace

/// A service on the session bus that tells the idle time.
class IdleTime::BusSource {
 public:
  /// Seconds, unless there is an error.
  using Question = double(GDBusConnection* bus, GError** error);

  BusSource(const char* name, Question* question) : name_(name), question_(question) {}

  std::optional<double> ask() {
    if (!bus_) bus_ = sessionBus();
    if (hangs_ || !bus_) return std::nullopt;
    GError* error = nullptr;
    const double seconds = question_(bus_.get(), &error);
    if (const GErrorPtr failure(error); failure) {
      hangs_ = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
      if (hangs_) NSLog(std::string("[Norvane] not asked for the idle time again: ") + name_);
      return std::nullopt;
    }
    // Desktops that cannot tell say 0 at all times.
    counts_ = counts_ || seconds > 0;
    return counts_ ? std::optional(seconds) : std::nullopt;
  }

 private:
  GObjectPtr<GDBusConnection> bus_;
  const char* name_;
  Question* question_;
  bool counts_ = false;
  bool hangs_ = false;
};

IdleTime::IdleTime()
    : filter_([this](const XEvent& event) {
        if (isInput(event)) lastSeen_ = Clock::now();
        return false;
      }),
      idleMonitor_(std::make_unique<BusSource>(kIdleMonitor, askIdleMonitor)),
      screenSaver_(std::make_unique<BusSource>(kScreenSaver, askScreenSaver)) {}

IdleTime::~IdleTime() = default;

double IdleTime::secondsSinceLastEventType(CGEventType /*type*/) const {
  if (const auto idle = idleOfServer()) return *idle;
  if (const auto idle = idleMonitor_->ask()) return *idle;
  const double atMost = Seconds(Clock::now() - lastSeen_).count();
  // Some screen savers count in another unit than they should; none is idle for longer than this.
  return std::min(screenSaver_->ask().value_or(atMost), atMost);
}

}  // namespace norvane
