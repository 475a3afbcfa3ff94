#include "platform/x11/idle_time.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>

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

/// Asks a service on the session bus, by what GLib's generator has written for it, how many parts
/// of a second have passed; the answer is in seconds.
template <class Proxy, class Count>
auto question(Proxy* (*make)(GDBusConnection*, GDBusProxyFlags, const char*, const char*,
                             GCancellable*, GError**),
              const char* name, const char* path,
              gboolean (*call)(Proxy*, GDBusCallFlags, int, Count*, GCancellable*, GError**),
              int partsOfASecond) {
  return [=](GDBusConnection* bus, GError** error) {
    const GObjectPtr<Proxy> service(make(bus, kForCalls, name, path, nullptr, error));
    Count count = 0;
    if (service) {
      call(service.get(), G_DBUS_CALL_FLAGS_NO_AUTO_START, kPatience, &count, nullptr, error);
    }
    return static_cast<double>(count) / partsOfASecond;
  };
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
  using Question = std::function<double(GDBusConnection* bus, GError** error)>;

  BusSource(const char* name, Question question) : name_(name), question_(std::move(question)) {}

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
  Question question_;
  bool counts_ = false;
  bool hangs_ = false;
};

IdleTime::IdleTime()
    : filter_([this](const XEvent& event) {
        if (isInput(event)) lastSeen_ = Clock::now();
        return false;
      }),
      idleMonitor_(std::make_unique<BusSource>(
          kIdleMonitor, question(bus_idle_monitor_proxy_new_sync, kIdleMonitor,
                                 "/org/gnome/Mutter/IdleMonitor/Core",
                                 bus_idle_monitor_call_get_idletime_sync, 1000))),
      screenSaver_(std::make_unique<BusSource>(
          kScreenSaver,
          question(bus_screen_saver_proxy_new_sync, kScreenSaver, "/org/freedesktop/ScreenSaver",
                   bus_screen_saver_call_get_session_idle_time_sync, 1))) {}

IdleTime::~IdleTime() = default;

double IdleTime::secondsSinceLastEventType(CGEventType /*type*/) const {
  if (const auto idle = idleOfServer()) return *idle;
  if (const auto idle = idleMonitor_->ask()) return *idle;
  const double atMost = Seconds(Clock::now() - lastSeen_).count();
  // Some screen savers count in another unit than they should; none is idle for longer than this.
  return std::min(screenSaver_->ask().value_or(atMost), atMost);
}

}  // namespace norvane
