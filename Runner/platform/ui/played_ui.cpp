#include "platform/ui/played_ui.h"

#include "platform/flutter/flutter_view_controller.h"
#include "platform/ui/message_view.h"

namespace norvane {

_GtkWidget* PlayedUi::makeView(FlutterViewController& controller) {
  return makeMessageView(controller.hasClearBackground(),
                         "The user interface of this window is played by the console.");
}

}  // namespace norvane
