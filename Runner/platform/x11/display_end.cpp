#include "platform/x11/display_end.h"

#include <X11/Xlib.h>
#include <unistd.h>

#include "platform/linux/command_line.h"
#include "platform/session/journal_log.h"

namespace norvane {

void endWithDisplay() {
  XSetIOErrorHandler([](Display*) -> int {
    // At the end of the process the platform, and with it NSLog, may be gone before the display is.
    JournalLog().write("[Norvane] the display has gone away");
    ::_exit(kExitNoDesktop);
  });
}

}  // namespace norvane
