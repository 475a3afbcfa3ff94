#include "platform/session/session.h"

#include "platform/linux/process.h"

namespace norvane {

bool isWaylandSession() {
  if (const auto type = environmentVariable("XDG_SESSION_TYPE")) return *type == "wayland";
  return !environmentVariable("WAYLAND_DISPLAY").value_or("").empty();
}

GObjectPtr<GDBusConnection> sessionBus() {
  GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (bus) g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
  return bus;
}

}  // namespace norvane
