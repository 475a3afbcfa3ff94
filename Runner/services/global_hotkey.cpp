// The application delegate's hotkey: one combination, registered system-wide, toggles Quick Access.

#include <memory>
#include <string>

#include "app/app_delegate.h"
#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/platform.h"
#include "quick_access/qa_panel_controller.h"
#include "services/hotkey_candidates.h"

namespace norvane {
namespace {

constexpr EventHotKeyID kHotkeyID{.signature = fourCharacterCode("NVHK"), .id = 1};
constexpr EventTypeSpec kHotkeyPressed{kEventClassKeyboard, kEventHotKeyPressed};

}  // namespace

void AppDelegate::installGlobalHotkey() {
  CarbonEventManager& carbon = platform().carbonEvents;
  if (!hotkeyHandlerRef) {
    const OSStatus status = carbon.InstallEventHandler(
        [self = weak_from_this()](const CarbonEvent& event) { return hotkeyPressed(self, event); },
        kHotkeyPressed, hotkeyHandlerRef);
    if (status != noErr) {
      NSLog("[Norvane] InstallEventHandler failed: " + std::to_string(status));
      return;
    }
  }
  for (const HotkeyChainEntry& entry : hotkeyCandidates(currentHotkeyChoice)) {
    const std::string label(entry.label);
    const OSStatus status = carbon.RegisterEventHotKey(entry.key, entry.mods, kHotkeyID, hotkeyRef);
    if (status == noErr) {
      currentRegisteredLabel = label;
      NSLog("[Norvane] global hotkey " + label + " registered (status=" + std::to_string(status) +
            ")");
      return;
    }
    NSLog("[Norvane] hotkey " + label + " RegisterEventHotKey failed: " + std::to_string(status) +
          " — 已被占用,尝试下一个");
  }
  currentRegisteredLabel.reset();
  NSLog("[Norvane] **所有**候选 hotkey 都被占用!Quick Access 不可用,用户需手动从主 App 触发");
}

void AppDelegate::setHotkeyChoice(const std::string& choice) {
  if (choice == currentHotkeyChoice) return;
  NSLog("[Norvane] hotkey choice changing: " + currentHotkeyChoice + " → " + choice);
  currentHotkeyChoice = choice;
  if (hotkeyRef) {
    platform().carbonEvents.UnregisterEventHotKey(*hotkeyRef);
    hotkeyRef.reset();
  }
  currentRegisteredLabel.reset();
  installGlobalHotkey();
}

OSStatus AppDelegate::hotkeyPressed(const std::weak_ptr<AppDelegate>& delegate,
                                    const CarbonEvent& event) {
  const auto alive = delegate.lock();
  if (!alive) return noErr;
  EventHotKeyID pressed;
  if (event.GetEventParameter(kEventParamDirectObject, typeEventHotKeyID, pressed) != noErr) {
    return noErr;
  }
  // Never inside the handler: the panel may take its time.
  platform().dispatch.mainAsync([delegate] {
    if (const auto self = delegate.lock()) self->qaPanel->toggle();
  });
  return noErr;
}

}  // namespace norvane
