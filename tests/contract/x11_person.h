#pragma once

#include <string>

#include "real_desktop.h"

struct _GtkWidget;
union _XEvent;

namespace norvane {

/// What another client can have of the keyboard. Modifiers are X's masks.
bool grabKey(OtherClient& client, unsigned keyCode, unsigned modifiers);
void ungrabKey(OtherClient& client, unsigned keyCode, unsigned modifiers);
/// Takes and gives back the whole keyboard.
bool canGrabKeyboard(OtherClient& client);

/// A window of another client's, which has the focus when this returns.
unsigned long focusWindowOf(OtherClient& client);

/// Whether the toolkit has passed the focus on, from a window that got it to where it takes keys.
bool isFocusSettled(_GtkWidget* window);

/// Whether a grabbed key was pressed, or repeats.
bool isKeyPress(const _XEvent& event);

/// Makes the Super keys set Mod3 instead of Mod4.
void moveSuperToMod3(OtherClient& client);
/// The current one of the layouts, from 0.
int currentLayout(OtherClient& client);
void chooseLayout(OtherClient& client, int layout);
/// Until `layOut` is called again.
void repeatKeysFast(OtherClient& client);
/// "us", "ru,us", ...: the first is current, and each modifier is where it usually is.
void layOut(const std::string& layouts);

inline constexpr unsigned kMod3 = 32;
inline constexpr unsigned kMod4 = 64;

}  // namespace norvane
