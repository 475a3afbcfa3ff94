#include "x11_person.h"

#include <cstdlib>

#include <X11/XKBlib.h>
#include <X11/keysym.h>
#include <gtk/gtk.h>
#include <gtk/gtkx.h>

namespace norvane {
namespace {

bool failed = false;

}  // namespace

bool grabKey(OtherClient& client, unsigned keyCode, unsigned modifiers) {
  failed = false;
  const auto previous = XSetErrorHandler([](Display*, XErrorEvent*) {
    failed = true;
    return 0;
  });
  XGrabKey(client.display(), static_cast<int>(keyCode), modifiers,
           DefaultRootWindow(client.display()), False, GrabModeAsync, GrabModeAsync);
  XSync(client.display(), False);
  XSetErrorHandler(previous);
  return !failed;
}

void ungrabKey(OtherClient& client, unsigned keyCode, unsigned modifiers) {
  XUngrabKey(client.display(), static_cast<int>(keyCode), modifiers,
             DefaultRootWindow(client.display()));
  XSync(client.display(), False);
}

bool canGrabKeyboard(OtherClient& client) {
  Display* display = client.display();
  const int status = XGrabKeyboard(display, DefaultRootWindow(display), False, GrabModeAsync,
                                   GrabModeAsync, CurrentTime);
  XUngrabKeyboard(display, CurrentTime);
  XSync(display, False);
  return status == GrabSuccess;
}

unsigned long focusWindowOf(OtherClient& client) {
  Display* display = client.display();
  const Window window =
      XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 80, 80, 0, 0, 0);
  XSelectInput(display, window, FocusChangeMask);
  XMapWindow(display, window);
  XEvent event;
  XWindowEvent(display, window, FocusChangeMask, &event);
  return window;
}

bool isFocusSettled(GtkWidget* window) {
  GdkWindow* toplevel = gtk_widget_get_window(window);
  Window focus = None;
  int revertTo = 0;
  XGetInputFocus(gdk_x11_get_default_xdisplay(), &focus, &revertTo);
  return focus != GDK_WINDOW_XID(toplevel) &&
         gdk_x11_window_lookup_for_display(gdk_window_get_display(toplevel), focus) == toplevel;
}

bool isKeyPress(const XEvent& event) { return event.type == KeyPress; }

void moveSuperToMod3(OtherClient& client) {
  XModifierKeymap* map = XGetModifierMapping(client.display());
  for (const KeySym symbol : {XK_Super_L, XK_Super_R}) {
    const KeyCode key = XKeysymToKeycode(client.display(), symbol);
    map = XDeleteModifiermapEntry(map, key, Mod4MapIndex);
    map = XInsertModifiermapEntry(map, key, Mod3MapIndex);
  }
  XSetModifierMapping(client.display(), map);
  XFreeModifiermap(map);
  XSync(client.display(), False);
}

int currentLayout(OtherClient& client) {
  XkbStateRec state;
  XkbGetState(client.display(), XkbUseCoreKbd, &state);
  return state.group;
}

void chooseLayout(OtherClient& client, int layout) {
  XkbLockGroup(client.display(), XkbUseCoreKbd, static_cast<unsigned>(layout));
  XSync(client.display(), False);
}

void repeatKeysFast(OtherClient& client) {
  XkbSetAutoRepeatRate(client.display(), XkbUseCoreKbd, 30, 10);
  XSync(client.display(), False);
}

void layOut(const std::string& layouts) {
  ASSERT_EQ(std::system(("setxkbmap -layout " + layouts).c_str()), 0);
  OtherClient client;
  chooseLayout(client, 0);
  XkbSetAutoRepeatRate(client.display(), XkbUseCoreKbd, 660, 40);
  XSync(client.display(), False);
  while (g_main_context_iteration(nullptr, FALSE)) continue;
}

}  // namespace norvane
