#pragma once

#include <string>

#include "platform/console/scripted_ui.h"
#include "platform/ui/window_ui.h"

namespace norvane {

/// UI programs that the console plays; the windows say so.
class PlayedUi : public WindowUi {
 public:
  ScriptedUi& embedder() override { return ui_; }
  _GtkWidget* makeView(FlutterViewController& controller) override;

 private:
  ScriptedUi ui_;
};

}  // namespace norvane
