#pragma once

#include <cstdint>
#include <optional>

#include "platform/carbon_events.h"
#include "platform/headless/live_profile.h"

namespace norvane {

/// Hotkeys beside those that the profile says other applications hold.
class HeadlessHotkeys : public CarbonEventManager {
 public:
  explicit HeadlessHotkeys(const LiveProfile& profile) : profile_(profile) {}

  // The control side

  /// The combination that the host holds.
  const std::optional<Hotkey>& registered() const { return registered_; }
  /// A combination is pressed; one that the host does not hold never reaches it.
  void press(const Hotkey& combination);

  OSStatus InstallEventHandler(Handler handler, const EventTypeSpec& type,
                               std::optional<EventHandlerRef>& handlerRef) override;
  OSStatus RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                               const EventHotKeyID& id,
                               std::optional<EventHotKeyRef>& hotKeyRef) override;
  OSStatus UnregisterEventHotKey(EventHotKeyRef hotKeyRef) override;

 private:
  const LiveProfile& profile_;
  Handler handler_;
  std::optional<Hotkey> registered_;
  EventHotKeyID id_;
};

}  // namespace norvane
