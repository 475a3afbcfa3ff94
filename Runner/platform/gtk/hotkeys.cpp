#include "platform/gtk/hotkeys.h"

#include <utility>

#include "platform/session/global_shortcuts_portal.h"
#include "platform/session/session.h"
#include "platform/x11/x11_hotkeys.h"

namespace norvane {

std::unique_ptr<CarbonEventManager> makeHotkeys(EventTime& eventTime, Dispatch& dispatch,
                                                std::function<void()> portalAnswered) {
  if (isWaylandSession()) {
    // The portal's time is not the X server's; without one, that is asked for its own.
    return std::make_unique<GlobalShortcutsPortal>(
        dispatch, [&eventTime] { eventTime.set(0); }, std::move(portalAnswered));
  }
  return std::make_unique<X11Hotkeys>(eventTime, dispatch);
}

}  // namespace norvane
