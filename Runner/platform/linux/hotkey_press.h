#pragma once

#include "platform/carbon_events.h"

namespace norvane {

/// The event of a hotkey that was pressed.
class HotkeyPress : public CarbonEvent {
 public:
  explicit HotkeyPress(const EventHotKeyID& id) : id_(id) {}
  OSStatus GetEventParameter(std::uint32_t name, std::uint32_t type,
                             EventHotKeyID& value) const override {
    if (name != kEventParamDirectObject || type != typeEventHotKeyID) {
      return eventParameterNotFoundErr;
    }
    value = id_;
    return noErr;
  }

 private:
  EventHotKeyID id_;
};

}  // namespace norvane
