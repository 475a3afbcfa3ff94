#pragma once

#include <memory>

#include "platform/carbon_events.h"
#include "platform/dispatch.h"

namespace norvane {

/// The handler of hotkey presses. Main thread.
class HotkeyHandler {
 public:
  explicit HotkeyHandler(Dispatch& dispatch) : dispatch_(dispatch) {}

  /// As CarbonEventManager's; paramErr for events that never come here.
  OSStatus InstallEventHandler(CarbonEventManager::Handler handler, const EventTypeSpec& type,
                               std::optional<EventHandlerRef>& handlerRef);
  /// Calls the handler in a turn of its own, unless it is gone by then.
  void post(const EventHotKeyID& id);

 private:
  Dispatch& dispatch_;
  std::shared_ptr<CarbonEventManager::Handler> handler_;
};

}  // namespace norvane
