#pragma once

#include <gio/gio.h>

#include "platform/linux/glib_handles.h"

namespace norvane {

/// Whether the person's session is a Wayland one: an X server there sees only part of the input.
bool isWaylandSession();

/// The connection to the session's message bus that this process shares, for as long as somebody
/// holds it; null without a bus. Losing it does not end the process.
GObjectPtr<GDBusConnection> sessionBus();

}  // namespace norvane
