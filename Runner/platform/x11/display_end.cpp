#include "platform/x11/display_end.h"

#include <X11/Xlib.h>
#include <unistd.h>

#include "platform/linux/command_line.h"
#include "platform/log.h"

namespace norvane {

void endWithDisplay() {
  XSetIOErrorHandler([](Display*) -> int {
    NSLog("[Norvane] the display has gone away");
    ::_exit(kExitNoDesktop);
  });
}

}  // namespace norvane
