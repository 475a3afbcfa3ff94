#pragma once

#include "platform/explorer/traffic.h"

struct _GtkWidget;

namespace norvane {

/// What the explorer shows in the main window: the methods, one of them to call, and the traffic.
/// Floating; owns what is in it. `ui` and `traffic` outlive it.
_GtkWidget* makeMainView(ScriptedUi& ui, Traffic& traffic);

}  // namespace norvane
