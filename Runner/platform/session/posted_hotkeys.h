#pragma once

#include <memory>
#include <optional>

#include "platform/carbon_events.h"
#include "platform/dispatch.h"

namespace norvane {

/// Hotkeys of the session, whose presses come amid other things: the handler hears of each by way
/// of the main queue. Main thread.
class PostedHotkeys : public CarbonEventManager {
 public:
  /// paramErr for events that never come here.
  OSStatus InstallEventHandler(Handler handler, const EventTypeSpec& type,
                               std::optional<EventHandlerRef>& handlerRef) final;

 protected:
  explicit PostedHotkeys(Dispatch& dispatch) : dispatch_(dispatch) {}

  /// Calls the handler in a turn of its own, unless it is gone by then.
  void post(const EventHotKeyID& id);

  Dispatch& dispatch_;

 private:
  std::shared_ptr<Handler> handler_;
};

}  // namespace norvane
