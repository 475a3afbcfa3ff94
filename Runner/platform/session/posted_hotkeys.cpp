#include "platform/session/posted_hotkeys.h"

#include <utility>

#include "platform/linux/hotkey_press.h"

namespace norvane {

OSStatus PostedHotkeys::InstallEventHandler(Handler handler, const EventTypeSpec& type,
                                            std::optional<EventHandlerRef>& handlerRef) {
  if (type.eventClass != kEventClassKeyboard || type.eventKind != kEventHotKeyPressed) {
    return paramErr;
  }
  handler_ = std::make_shared<Handler>(std::move(handler));
  constexpr EventHandlerRef kHandlerRef = 1;  // there is one at a time
  handlerRef = kHandlerRef;
  return noErr;
}

void PostedHotkeys::post(const EventHotKeyID& id) {
  dispatch_.mainAsync([handler = std::weak_ptr(handler_), id] {
    if (const auto alive = handler.lock()) (*alive)(HotkeyPress(id));
  });
}

}  // namespace norvane
