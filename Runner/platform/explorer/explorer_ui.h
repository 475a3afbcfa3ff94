#pragma once

#include "platform/explorer/traffic.h"
#include "platform/ui/window_ui.h"

namespace norvane {

/// In the place of UI programs: windows in which a person sees every channel of the host, calls its
/// methods and watches what passes. It speaks as UI programs do, in bytes; the console may speak
/// beside it.
class ExplorerUi : public WindowUi {
 public:
  ScriptedUi& embedder() override { return ui_; }
  _GtkWidget* makeView(FlutterViewController& controller) override;

 private:
  ScriptedUi ui_;
  Traffic traffic_{ui_};
};

}  // namespace norvane
