#pragma once

#include <gio/gio.h>

#include "platform/gtk/glib_handles.h"

namespace norvane {

/// Whether the person's session is a Wayland one: an X server there sees only part of the input.
bool isWaylandSession();

/// The session's message bus, which everybody in this process shares; null without one. Losing it
/// does not end the process.
GObjectPtr<GDBusConnection> sessionBus();

}  // namespace norvane
