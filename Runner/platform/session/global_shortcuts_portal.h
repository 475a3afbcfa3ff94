#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gio/gio.h>

#include "platform/linux/glib_handles.h"
#include "platform/session/posted_hotkeys.h"

struct _BusGlobalShortcuts;
struct _BusPortalSession;

namespace norvane {

/// One hotkey at a time, through the desktop portal's GlobalShortcuts, the only way on a Wayland
/// session. Main thread.
///
/// The portal answers later, and the desktop may ask the person, who may choose another key. To
/// register waits for the answer for at most two seconds, during which no task of the main queue
/// runs. Status 0 means that the desktop has said that the hotkey works; eventHotKeyExistsErr that
/// it gave the hotkey no key. When there is no portal, when the portal or the person refuses, or
/// has not answered within the wait, the status is eventInternalErr. After that, and after a
/// question that brought no key, it is so for all that is registered in the same turn: nobody is
/// asked about one combination after another. A hotkey that is given later does reach the handler,
/// until another one is registered.
class GlobalShortcutsPortal : public PostedHotkeys {
 public:
  /// `pressed` is called at each press, ahead of the handler; `answered` once, when the portal has
  /// first served this process or failed to.
  GlobalShortcutsPortal(Dispatch& dispatch, std::function<void()> pressed,
                        std::function<void()> answered);
  ~GlobalShortcutsPortal() override;
  GlobalShortcutsPortal(const GlobalShortcutsPortal&) = delete;

  /// paramErr for key codes and modifiers that a shortcut cannot have.
  OSStatus RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                               const EventHotKeyID& id,
                               std::optional<EventHotKeyRef>& hotKeyRef) override;
  OSStatus UnregisterEventHotKey(EventHotKeyRef hotKeyRef) override;

 private:
  class Attempt;

  /// Takes the outcome of the attempt.
  OSStatus conclude();
  OSStatus giveUp(OSStatus status);
  void listen();
  void stopListening();

  std::function<void()> pressed_;
  std::function<void()> answered_;
  GObjectPtr<GDBusConnection> bus_;
  // What the portal says while there is a session
  GObjectPtr<_BusGlobalShortcuts> activations_;
  GObjectPtr<_BusPortalSession> closing_;
  std::string session_;  ///< the portal's path of it; empty without one
  EventHotKeyID id_;
  bool isHeld_ = false;
  /// Set until the end of a turn in which nobody is to be asked any more.
  std::shared_ptr<bool> hasGivenUp_ = std::make_shared<bool>(false);
  std::shared_ptr<bool> alive_;  ///< as long as the attempt's outcome is wanted
  std::unique_ptr<Attempt> attempt_;
};

}  // namespace norvane
