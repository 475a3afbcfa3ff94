#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "platform/session/posted_hotkeys.h"
#include "platform/x11/event_time.h"
#include "platform/x11/x11_event_filter.h"

struct _GdkKeymap;

namespace norvane {

class X11Keymap;

/// A key with modifiers, in the X server's terms.
struct X11Combination {
  unsigned key = 0;
  unsigned modifiers = 0;
  unsigned locks = 0;  ///< the modifiers that do not matter
  bool operator==(const X11Combination&) const = default;
};

/// Hotkeys as passive grabs of keys on an X server. Key codes are places on the keyboard, whatever
/// layout it has; ⌘ is the Super key and option is Alt. Locks do not matter, and a key that is held
/// down is pressed once. They work as well while a grab of the application's own keeps all keys in
/// its windows. Those with the Super key are taken where the window manager keeps that for itself.
/// Main thread; made after the toolkit is initialised.
///
/// On a Wayland session the server would grant grabs that see nothing; see makeHotkeys.
class X11Hotkeys : public PostedHotkeys {
 public:
  X11Hotkeys(EventTime& eventTime, Dispatch& dispatch);
  ~X11Hotkeys() override;
  X11Hotkeys(const X11Hotkeys&) = delete;

  /// paramErr when this keyboard does not have the key or a modifier, eventInternalErr when the
  /// server refuses for another reason than that the combination is taken.
  OSStatus RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                               const EventHotKeyID& id,
                               std::optional<EventHotKeyRef>& hotKeyRef) override;
  OSStatus UnregisterEventHotKey(EventHotKeyRef hotKeyRef) override;

 private:
  struct Registration {
    std::uint32_t keyCode;
    std::uint32_t modifiers;
    EventHotKeyID id;
    std::optional<X11Combination> grabbed;  ///< none while a changed keyboard does not allow it
  };

  bool take(const _XEvent& event);
  /// After the keyboard was exchanged or its map changed.
  void grabAnew();

  EventTime& eventTime_;
  _GdkKeymap* keymap_;
  std::map<EventHotKeyRef, Registration> registrations_;
  EventHotKeyRef lastRef_ = 0;
  std::set<unsigned> down_;  ///< keys of hotkeys, for all that has been seen of them
  X11EventFilter filter_;
};

}  // namespace norvane
