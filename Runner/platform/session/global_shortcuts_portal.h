#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/glib_handles.h"
#include "platform/session/hotkey_handler.h"
#include "platform/x11/event_time.h"

namespace norvane {

/// One hotkey at a time, through the desktop portal's GlobalShortcuts, the only way on a Wayland
/// session. Main thread.
///
/// The portal answers later, and the desktop may ask the person, who may choose another key. To
/// register waits for the answer for at most two seconds, during which no task of the main queue
/// runs. Status 0 means that the desktop has said that the hotkey works; eventHotKeyExistsErr that
/// it gave the hotkey no key. When there is no portal, when the person refuses, or has not decided
/// within the wait, the status is eventInternalErr, for all that is registered in the same turn:
/// nobody is asked for one combination after another. A hotkey that the person agrees to later does
/// reach the handler, until another one is registered.
class GlobalShortcutsPortal : public CarbonEventManager {
 public:
  GlobalShortcutsPortal(EventTime& eventTime, Dispatch& dispatch);
  ~GlobalShortcutsPortal() override;
  GlobalShortcutsPortal(const GlobalShortcutsPortal&) = delete;

  OSStatus InstallEventHandler(Handler handler, const EventTypeSpec& type,
                               std::optional<EventHandlerRef>& handlerRef) override;
  /// paramErr for key codes and modifiers that a shortcut cannot have.
  OSStatus RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                               const EventHotKeyID& id,
                               std::optional<EventHotKeyRef>& hotKeyRef) override;
  OSStatus UnregisterEventHotKey(EventHotKeyRef hotKeyRef) override;

 private:
  OSStatus bind(const std::string& trigger);
  void listen();
  void endSession();

  EventTime& eventTime_;
  Dispatch& dispatch_;
  HotkeyHandler handler_;
  GObjectPtr<GDBusConnection> bus_;
  std::vector<unsigned> subscriptions_;
  std::string session_;  ///< the portal's path of it; empty without one
  EventHotKeyID id_;
  bool isHeld_ = false;
  /// Set until the end of a turn in which the portal could not be asked or was refused.
  std::shared_ptr<bool> hasGivenUp_ = std::make_shared<bool>(false);
};

}  // namespace norvane
