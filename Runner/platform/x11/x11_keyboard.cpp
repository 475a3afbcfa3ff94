#include "platform/x11/x11_keyboard.h"

#include <optional>
#include <string>

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <gdk/gdkx.h>

#include "platform/log.h"
#include "platform/x11/x11_focus.h"
#include "platform/x11/x11_keymap.h"

namespace norvane {
namespace {

class Layout : public TISInputSource {
 public:
  explicit Layout(int layoutGroup) : group(layoutGroup) {}
  const int group;
};

std::optional<int> currentGroup() {
  XkbStateRec state;
  if (XkbGetState(gdk_x11_get_default_xdisplay(), XkbUseCoreKbd, &state) != Success) {
    return std::nullopt;
  }
  return state.locked_group;
}

/// Whether the event may mean that the keyboard went to another window, or that a grab ended which
/// had come over ours, such as a menu's. The start of a grab means neither.
bool movesKeyboard(const XEvent& event) {
  if (event.type == FocusIn || event.type == FocusOut) return event.xfocus.mode != NotifyGrab;
  const int type = inputEventType(event);
  if (type != XI_FocusIn && type != XI_FocusOut) return false;
  const int mode = static_cast<const XIFocusInEvent*>(event.xcookie.data)->mode;
  return mode != XINotifyGrab && mode != XINotifyPassiveGrab;
}

}  // namespace

X11Keyboard::X11Keyboard()
    : filter_([this](const XEvent& event) {
        if (isSecure_ && movesKeyboard(event)) followFocus();
        return false;
      }) {}

X11Keyboard::~X11Keyboard() { release(); }

void X11Keyboard::EnableSecureEventInput() {
  isSecure_ = true;
  followFocus();
}

void X11Keyboard::DisableSecureEventInput() {
  isSecure_ = false;
  release();
}

void X11Keyboard::followFocus() {
  const XWindow focus = xFocus();
  if (!ownWindow(focus)) {
    release();
    return;
  }
  // On the very window that has the keyboard: the server reports no change of focus then, and the
  // field in it goes on blinking. By the input extension, as the toolkit grabs for its menus: the
  // two ways exclude each other. Asking for what is held already does no harm.
  unsigned char keys[XIMaskLen(XI_LASTEVENT)] = {};
  XISetMask(keys, XI_KeyPress);
  XISetMask(keys, XI_KeyRelease);
  XIEventMask mask{.deviceid = masterKeyboard(), .mask_len = sizeof keys, .mask = keys};
  GdkDisplay* display = gdk_display_get_default();
  gdk_x11_display_error_trap_push(display);
  const int status = XIGrabDevice(GDK_DISPLAY_XDISPLAY(display), masterKeyboard(), focus,
                                  CurrentTime, None, GrabModeAsync, GrabModeAsync, True, &mask);
  const int error = gdk_x11_display_error_trap_pop(display);
  isHeld_ = status == GrabSuccess && error == Success;
  // The end of another's grab is a change of focus, at which it is tried again.
  if (!isHeld_) {
    NSLog("[Norvane] secure keyboard entry waits for the keyboard (status=" +
          std::to_string(error == Success ? status : error) + ")");
  }
}

void X11Keyboard::release() {
  if (!isHeld_) return;
  isHeld_ = false;
  Display* display = gdk_x11_get_default_xdisplay();
  XIUngrabDevice(display, masterKeyboard(), CurrentTime);
  XFlush(display);
}

std::shared_ptr<TISInputSource> X11Keyboard::TISCopyCurrentKeyboardInputSource() {
  const auto group = currentGroup();
  return group ? std::make_shared<Layout>(*group) : nullptr;
}

std::shared_ptr<TISInputSource> X11Keyboard::TISCopyCurrentASCIICapableKeyboardInputSource() {
  const X11Keymap keymap;
  const auto current = currentGroup();
  if (current && keymap.isLatin(*current)) return std::make_shared<Layout>(*current);
  for (int group = 0; group < keymap.groupCount(); ++group) {
    if (keymap.isLatin(group)) return std::make_shared<Layout>(group);
  }
  return nullptr;
}

void X11Keyboard::TISSelectInputSource(const TISInputSource& source) {
  Display* display = gdk_x11_get_default_xdisplay();
  XkbLockGroup(display, XkbUseCoreKbd,
               static_cast<unsigned>(dynamic_cast<const Layout&>(source).group));
  XFlush(display);
}

}  // namespace norvane
