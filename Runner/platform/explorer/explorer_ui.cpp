#include "platform/explorer/explorer_ui.h"

#include <gtk/gtk.h>

#include "platform/explorer/main_view.h"
#include "platform/explorer/panel_view.h"
#include "platform/explorer/widgets.h"
#include "platform/flutter/flutter_engine.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {
namespace {

/// As a UI program does once it listens, so that links arrive: after the launch, in which the
/// channels are bound.
void sayReadyLater(ScriptedUi& ui) {
  g_idle_add(
      [](gpointer data) -> gboolean {
        static_cast<ScriptedUi*>(data)->send("main", "norvane/deeplink",
                                             encodeMethodCall("flutterReady", {}), [](Bytes) {});
        return G_SOURCE_REMOVE;
      },
      &ui);
}

}  // namespace

GtkWidget* ExplorerUi::makeView(FlutterViewController& controller) {
  loadStyle();
  if (controller.engine().name() != "main") return PanelView::make(ui_);
  sayReadyLater(ui_);
  return makeMainView(ui_, traffic_);
}

}  // namespace norvane
