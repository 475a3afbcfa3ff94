#pragma once

#include <vector>

#include "platform/x11/x11_properties.h"

struct _GdkWindow;

namespace norvane {

/// The X window that has the keyboard; 0 when none has. It is asked of the server: the toolkit
/// reports each grab as a loss of the keyboard, and a hotkey is such a grab. Main thread.
XWindow xFocus();

/// Where a window stands in the server's tree.
struct WindowFamily {
  XWindow parent = 0;
  std::vector<XWindow> children;  ///< the topmost last
};
/// Empty when the window is gone. Errors must be forgiven around it.
WindowFamily family(XWindow window);

/// Whether a window manager runs. One that died leaves its properties on the root window, but not
/// its own window. Errors must be forgiven around it and `xActiveWindow`.
bool isWindowManaged();

/// The application's window that has the keyboard, as the window manager, or else the server, says;
/// 0 when none has.
XWindow xActiveWindow();

/// The input extension's number of the keyboard whose keys reach windows.
int masterKeyboard();

/// The window of this application that `window` is; null when it is none of its own.
_GdkWindow* ownWindow(XWindow window);

}  // namespace norvane
