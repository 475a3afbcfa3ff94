#include "platform/headless/headless_hotkeys.h"

#include <algorithm>
#include <utility>

#include "platform/hotkey_press.h"

namespace norvane {
namespace {

// There is one handler and one hotkey at a time; any number names them.
constexpr EventHandlerRef kHandlerRef = 1;
constexpr EventHotKeyRef kHotKeyRef = 1;

}  // namespace

void HeadlessHotkeys::press(const Hotkey& combination) {
  // Each line of the console is a turn of its own: no call of the host's is under way.
  if (handler_ && registered_ == combination) handler_(HotkeyPress(id_));
}

OSStatus HeadlessHotkeys::InstallEventHandler(Handler handler, const EventTypeSpec& /*type*/,
                                              std::optional<EventHandlerRef>& handlerRef) {
  const OSStatus status = profile_.get(&Profile::hotkeyHandlerStatus);
  if (status != noErr) return status;
  handler_ = std::move(handler);
  handlerRef = kHandlerRef;
  return noErr;
}

OSStatus HeadlessHotkeys::RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              const EventHotKeyID& id,
                                              std::optional<EventHotKeyRef>& hotKeyRef) {
  const Hotkey combination{keyCode, modifiers};
  const auto taken = profile_.get(&Profile::takenHotkeys);
  if (registered_ || std::ranges::find(taken, combination) != taken.end()) {
    return eventHotKeyExistsErr;
  }
  registered_ = combination;
  id_ = id;
  hotKeyRef = kHotKeyRef;
  return noErr;
}

OSStatus HeadlessHotkeys::UnregisterEventHotKey(EventHotKeyRef /*hotKeyRef*/) {
  return std::exchange(registered_, std::nullopt) ? noErr : eventHotKeyInvalidErr;
}

}  // namespace norvane
