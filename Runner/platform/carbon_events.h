#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/ns_apple_event_manager.h"
#include "platform/os_status.h"

namespace norvane {

inline constexpr std::uint32_t kEventClassKeyboard = fourCharacterCode("keyb");
inline constexpr std::uint32_t kEventHotKeyPressed = 5;
inline constexpr std::uint32_t kEventParamDirectObject = fourCharacterCode("----");
inline constexpr std::uint32_t typeEventHotKeyID = fourCharacterCode("hkid");

// Statuses.
inline constexpr OSStatus paramErr = -50;
inline constexpr OSStatus eventInternalErr = -9868;
inline constexpr OSStatus eventParameterNotFoundErr = -9870;
/// RegisterEventHotKey: another application holds the combination.
inline constexpr OSStatus eventHotKeyExistsErr = -9878;
/// UnregisterEventHotKey: no such hotkey is held.
inline constexpr OSStatus eventHotKeyInvalidErr = -9879;

// Modifier masks and virtual key codes (physical keys of an ANSI keyboard).
inline constexpr std::uint32_t cmdKey = 0x0100;
inline constexpr std::uint32_t shiftKey = 0x0200;
inline constexpr std::uint32_t optionKey = 0x0800;
inline constexpr std::uint32_t controlKey = 0x1000;
inline constexpr std::uint32_t kVK_ANSI_O = 0x1F;
inline constexpr std::uint32_t kVK_ANSI_Backslash = 0x2A;
inline constexpr std::uint32_t kVK_Space = 0x31;

struct EventTypeSpec {
  std::uint32_t eventClass;
  std::uint32_t eventKind;
};

/// Names a hotkey of the application.
struct EventHotKeyID {
  std::uint32_t signature = 0;
  std::uint32_t id = 0;
};

/// Names a registered hotkey, and an installed handler, of the platform's.
using EventHotKeyRef = std::uintptr_t;
using EventHandlerRef = std::uintptr_t;

/// An event, for as long as its handler runs.
class CarbonEvent {
 public:
  virtual ~CarbonEvent() = default;
  /// Sets `value` and answers noErr, for kEventParamDirectObject as typeEventHotKeyID;
  /// eventParameterNotFoundErr for anything else, and `value` stays.
  virtual OSStatus GetEventParameter(std::uint32_t name, std::uint32_t type,
                                     EventHotKeyID& value) const = 0;
};

/// System-wide hotkeys. Main thread. Every status is true when its call returns; what fails leaves
/// its reference as it was.
class CarbonEventManager {
 public:
  /// Called for each press in a turn of its own, never inside a call of this class. A key that is
  /// held down is pressed once. What it answers changes nothing.
  using Handler = std::function<OSStatus(const CarbonEvent& event)>;

  virtual ~CarbonEventManager() = default;

  /// Takes over `handler`, in place of the one before; it stays as long as this object. paramErr
  /// for a `type` that is not kEventHotKeyPressed of the keyboard, where a desktop looks at it.
  virtual OSStatus InstallEventHandler(Handler handler, const EventTypeSpec& type,
                                       std::optional<EventHandlerRef>& handlerRef) = 0;
  /// noErr, and `hotKeyRef` is set, when the application now holds the combination; a desktop may
  /// have room for one. eventHotKeyExistsErr when it is taken, by this application too; paramErr
  /// for keys that cannot be had; any other when the desktop gives none. One that it gives later is
  /// heard of all the same. May wait for the desktop, two seconds at most.
  virtual OSStatus RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                       const EventHotKeyID& id,
                                       std::optional<EventHotKeyRef>& hotKeyRef) = 0;
  /// Gives the combination back to others; a press that has happened may still be told.
  /// eventHotKeyInvalidErr the second time, or when it was never held.
  virtual OSStatus UnregisterEventHotKey(EventHotKeyRef hotKeyRef) = 0;
};

}  // namespace norvane
