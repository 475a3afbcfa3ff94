#pragma once

#include "platform/x11/x11_properties.h"

struct _GdkWindow;

namespace norvane {

/// The X window that has the keyboard; 0 when none has. It is asked of the server: the toolkit
/// reports each grab as a loss of the keyboard, and a hotkey is such a grab. Main thread.
XWindow xFocus();

/// The input extension's number of the keyboard whose keys reach windows.
int masterKeyboard();

/// The window of this application that `window` is; null when it is none of its own.
_GdkWindow* ownWindow(XWindow window);

}  // namespace norvane
