#include "platform/gtk/hotkeys.h"

#include <utility>

#include "platform/session/global_shortcuts_portal.h"
#include "platform/session/session.h"
#include "platform/x11/x11_hotkeys.h"

namespace norvane {

std::unique_ptr<CarbonEventManager> makeHotkeys(EventTime& eventTime, Dispatch& dispatch,
                                                std::function<void()> portalAnswered) {
  if (isWaylandSession())
    return std::make_unique<GlobalShortcutsPortal>(eventTime, dispatch, std::move(portalAnswered));
  return std::make_unique<X11Hotkeys>(eventTime, dispatch);
}

}  // namespace norvane
