#pragma once

#include "platform/keyboard_input.h"
#include "platform/x11/x11_event_filter.h"

namespace norvane {

/// Secure entry as a grab of the keyboard, input sources as the layouts of the keyboard's map.
///
/// The grab is held only while one of this application's windows has the keyboard, as it keeps all
/// keys from everybody else: the window manager's shortcuts, a screen locker and other programs'
/// hotkeys rest meanwhile. It keeps keystrokes from programs that ask for them as windows do; X has
/// no means against those that watch the devices, by raw events or by polling the keys.
///
/// Of several layouts with Latin letters, the current one counts as the ASCII-capable one. Made
/// after the toolkit is initialised.
class X11Keyboard : public KeyboardInput {
 public:
  X11Keyboard();
  ~X11Keyboard() override;
  X11Keyboard(const X11Keyboard&) = delete;

  void EnableSecureEventInput() override;
  void DisableSecureEventInput() override;

  std::shared_ptr<TISInputSource> TISCopyCurrentKeyboardInputSource() override;
  std::shared_ptr<TISInputSource> TISCopyCurrentASCIICapableKeyboardInputSource() override;
  void TISSelectInputSource(const TISInputSource& source) override;

 private:
  void followFocus();
  void release();

  bool isSecure_ = false;
  bool isHeld_ = false;
  X11EventFilter filter_;
};

}  // namespace norvane
