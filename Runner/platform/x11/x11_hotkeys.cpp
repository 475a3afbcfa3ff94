#include "platform/x11/x11_hotkeys.h"

#include <algorithm>
#include <array>
#include <utility>

#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>
#include <gdk/gdkx.h>

#include "platform/linux/hotkey_press.h"
#include "platform/log.h"
#include "platform/session/key_codes.h"
#include "platform/x11/x11_focus.h"
#include "platform/x11/x11_keymap.h"
#include "platform/x11/x11_super_key.h"

namespace norvane {
namespace {

/// The bits of an event's state that are modifiers; the others are buttons and the layout.
constexpr unsigned kModifierBits = 0xFF;

/// Nothing when this keyboard does not have the key or a modifier.
std::optional<X11Combination> combinationFor(std::uint32_t keyCode, std::uint32_t modifiers) {
  const PhysicalKey* key = physicalKey(keyCode);
  if (!key) return std::nullopt;
  const X11Keymap keymap;
  const std::pair<std::uint32_t, unsigned> masks[] = {
      {cmdKey, keymap.modifiersOf({XK_Super_L, XK_Super_R})},
      {optionKey, keymap.modifiersOf({XK_Alt_L, XK_Alt_R})},
      {shiftKey, ShiftMask},
      {controlKey, ControlMask},
  };
  X11Combination combination{.key = keymap.keyCodeAt(key->place),
                             .modifiers = 0,
                             .locks = LockMask | keymap.modifiersOf({XK_Num_Lock})};
  for (const auto& [modifier, mask] : masks) {
    if (!(modifiers & modifier)) continue;
    if (mask == 0) return std::nullopt;
    combination.modifiers |= mask;
    modifiers &= ~modifier;
  }
  if (combination.key == 0 || modifiers != 0) return std::nullopt;
  return combination;
}

std::array<unsigned, 4> variants(const X11Combination& combination) {
  const unsigned plain = combination.modifiers;
  const unsigned numLock = combination.locks & ~unsigned{LockMask};
  return {plain, plain | LockMask, plain | numLock, plain | combination.locks};
}

std::array<XIGrabModifiers, 4> inputVariants(const X11Combination& combination) {
  std::array<XIGrabModifiers, 4> converted{};
  std::ranges::transform(variants(combination), converted.begin(), [](unsigned modifiers) {
    return XIGrabModifiers{.modifiers = static_cast<int>(modifiers), .status = 0};
  });
  return converted;
}

/// When it returns, others can have the combination.
void ungrab(const X11Combination& combination) {
  GdkDisplay* display = gdk_display_get_default();
  gdk_x11_display_error_trap_push(display);
  auto inputModifiers = inputVariants(combination);
  XIUngrabKeycode(GDK_DISPLAY_XDISPLAY(display), masterKeyboard(),
                  static_cast<int>(combination.key), gdk_x11_get_default_root_xwindow(),
                  static_cast<int>(inputModifiers.size()), inputModifiers.data());
  for (const unsigned modifiers : variants(combination)) {
    XUngrabKey(GDK_DISPLAY_XDISPLAY(display), static_cast<int>(combination.key), modifiers,
               gdk_x11_get_default_root_xwindow());
  }
  XSync(GDK_DISPLAY_XDISPLAY(display), False);
  gdk_x11_display_error_trap_pop_ignored(display);
}

/// In both of the server's ways, which do not exclude each other: window managers and programs that
/// use either find it taken, or have it. The press comes by the input extension, which tells a
/// repetition from a press; a release may get lost when a grab of our windows' ends meanwhile.
OSStatus grab(const X11Combination& combination) {
  GdkDisplay* display = gdk_display_get_default();
  gdk_x11_display_error_trap_push(display);
  for (const unsigned modifiers : variants(combination)) {
    XGrabKey(GDK_DISPLAY_XDISPLAY(display), static_cast<int>(combination.key), modifiers,
             gdk_x11_get_default_root_xwindow(), False, GrabModeAsync, GrabModeAsync);
  }
  unsigned char keys[XIMaskLen(XI_LASTEVENT)] = {};
  XISetMask(keys, XI_KeyPress);
  XISetMask(keys, XI_KeyRelease);
  XIEventMask mask{.deviceid = masterKeyboard(), .mask_len = sizeof keys, .mask = keys};
  auto inputModifiers = inputVariants(combination);
  const int refusals = XIGrabKeycode(
      GDK_DISPLAY_XDISPLAY(display), masterKeyboard(), static_cast<int>(combination.key),
      gdk_x11_get_default_root_xwindow(), XIGrabModeAsync, XIGrabModeAsync, False, &mask,
      static_cast<int>(inputModifiers.size()), inputModifiers.data());
  const int error = gdk_x11_display_error_trap_pop(display);
  if (error == Success && refusals == 0) return noErr;
  ungrab(combination);  // some of the variants may have been free
  return error == BadAccess || refusals > 0 ? eventHotKeyExistsErr : eventInternalErr;
}

}  // namespace

X11Hotkeys::X11Hotkeys(EventTime& eventTime, Dispatch& dispatch)
    : PostedHotkeys(dispatch),
      eventTime_(eventTime),
      keymap_(gdk_keymap_get_for_display(gdk_display_get_default())),
      filter_([this](const XEvent& event) { return take(event); }) {
  const auto changed = +[](GdkKeymap*, X11Hotkeys* self) { self->grabAnew(); };
  g_signal_connect(keymap_, "keys-changed", G_CALLBACK(changed), this);
}

X11Hotkeys::~X11Hotkeys() {
  g_signal_handlers_disconnect_by_data(keymap_, this);
  for (const auto& [ref, registration] : registrations_) {
    if (registration.grabbed) ungrab(*registration.grabbed);
  }
}

OSStatus X11Hotkeys::RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                         const EventHotKeyID& id,
                                         std::optional<EventHotKeyRef>& hotKeyRef) {
  const auto combination = combinationFor(keyCode, modifiers);
  if (!combination) return paramErr;
  // The server would let us have it twice.
  const bool ours = std::ranges::any_of(
      registrations_, [&](const auto& held) { return held.second.grabbed == combination; });
  if (ours) return eventHotKeyExistsErr;
  if ((modifiers & cmdKey) && windowManagerKeepsSuper()) return eventHotKeyExistsErr;
  const OSStatus status = grab(*combination);
  if (status != noErr) return status;
  registrations_[++lastRef_] = {keyCode, modifiers, id, combination};
  hotKeyRef = lastRef_;
  return noErr;
}

OSStatus X11Hotkeys::UnregisterEventHotKey(EventHotKeyRef hotKeyRef) {
  const auto node = registrations_.extract(hotKeyRef);
  if (node.empty()) return eventHotKeyInvalidErr;
  if (node.mapped().grabbed) ungrab(*node.mapped().grabbed);
  return noErr;
}

bool X11Hotkeys::take(const XEvent& event) {
  const int type = inputEventType(event);
  if (type != XI_KeyPress && type != XI_KeyRelease) return false;
  const auto& input = *static_cast<const XIDeviceEvent*>(event.xcookie.data);
  const auto key = static_cast<unsigned>(input.detail);
  if (type == XI_KeyRelease) return down_.erase(key) > 0;
  if (input.flags & XIKeyRepeat) return down_.contains(key);
  down_.erase(key);
  const auto state = static_cast<unsigned>(input.mods.effective);
  const auto pressed = std::ranges::find_if(registrations_, [&](const auto& held) {
    const auto& combination = held.second.grabbed;
    return combination && combination->key == key &&
           (state & kModifierBits & ~combination->locks) == combination->modifiers;
  });
  if (pressed == registrations_.end()) return false;
  down_.insert(key);
  eventTime_.set(static_cast<std::uint32_t>(input.time));
  post(pressed->second.id);
  return true;
}

void X11Hotkeys::grabAnew() {
  for (auto& [ref, registration] : registrations_) {
    const auto combination = combinationFor(registration.keyCode, registration.modifiers);
    if (combination == registration.grabbed) continue;
    if (registration.grabbed) ungrab(*registration.grabbed);
    registration.grabbed.reset();
    if (combination && grab(*combination) == noErr) {
      registration.grabbed = combination;
    } else {
      NSLog("[Norvane] the keyboard has changed, and the hotkey cannot be had on it");
    }
  }
}

}  // namespace norvane
