// The X server's hotkeys, secure entry and layouts.

#include <cstdlib>
#include <fstream>
#include <string>

#include "contract.h"
#include "desktop_worlds.h"
#include "platform/x11/x11_focus.h"

namespace norvane {
namespace {

using X11Input = InputContract<DesktopInput>;

TEST_F(X11Input, APressIsOneEventWhateverLocksAreOnAndHoweverLongItIsHeld) {
  constexpr unsigned kLocks[] = {66, 77};
  ASSERT_EQ(take(kCmdBackslash, 7), noErr);
  XkbSetAutoRepeatRate(x, XkbUseCoreKbd, 30, 10);
  for (const unsigned lock : kLocks) {
    others.press(lock);
    const int before = keyPresses;
    for (const unsigned key : {133, 51}) others.key(key, true);
    EXPECT_TRUE(await([&] { return keyPresses >= before + 5; }));
    for (const unsigned key : {133, 51}) others.key(key, false);  // as people do
  }
  XTestFakeButtonEvent(x, 1, True, CurrentTime);
  press(kCmdBackslash);
  XTestFakeButtonEvent(x, 1, False, CurrentTime);
  EXPECT_TRUE(await([&] { return presses.size() >= 3; }));
  EXPECT_EQ(presses, std::vector<unsigned>({7, 7, 7}));
  EXPECT_NE(time.last(), 0U);
  for (const unsigned lock : kLocks) others.press(lock);
}

TEST_F(X11Input, AHotkeyIsHeldWholeOrNotAtAllAndStaysOnItsKey) {
  const XCombination moved{51, Mod3Mask};
  ASSERT_TRUE(othersTake({51, Mod4Mask | Mod2Mask}));  // with NumLock on
  EXPECT_EQ(take(kCmdBackslash), eventHotKeyExistsErr);
  EXPECT_TRUE(isFree(kCmdBackslash));
  EXPECT_EQ(take({10, cmdKey}), paramErr);  // no such key here

  ASSERT_EQ(take(kCmdBackslash), noErr);
  EXPECT_EQ(take(kCmdBackslash), eventHotKeyExistsErr);
  // A layout with its backslash elsewhere, and the Super key on another modifier.
  layOut(
      "fr -print | sed 's/include \"pc+[^\"]*\"/& modifier_map Mod3 { Super_L };/' | "
      "xkbcomp - $DISPLAY 2>/dev/null");
  EXPECT_TRUE(await([&] { return !isFree(moved) && isFree(kCmdBackslash); }));
  press(kCmdBackslash);
  EXPECT_TRUE(await([&] { return presses.size() == 1; }));
}

TEST_F(X11Input, WhereTheWindowManagerKeepsSuperACombinationWithItIsTaken) {
  const std::string schemas = std::getenv("HOME");
  std::ofstream(schemas + "/mutter.gschema.xml")
      << "<schemalist><schema id='org.gnome.mutter' path='/org/gnome/mutter/'><key type='s' "
         "name='overlay-key'><default>'Super_L'</default></key></schema></schemalist>";
  ASSERT_EQ(std::system(("glib-compile-schemas " + schemas).c_str()), 0);
  ::setenv("GSETTINGS_SCHEMA_DIR", schemas.c_str(), 1);
  ::setenv("GSETTINGS_BACKEND", "memory", 1);
  const XWindow manager = xNumber(DefaultRootWindow(x), "_NET_SUPPORTING_WM_CHECK");
  const std::string name = xText(manager, "_NET_WM_NAME");
  const auto rename = [&](const std::string& to) {
    XChangeProperty(x, manager, XInternAtom(x, "_NET_WM_NAME", False),
                    XInternAtom(x, "UTF8_STRING", False), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(to.data()), static_cast<int>(to.size()));
    XSync(x, False);
  };
  rename("GNOME Shell");
  EXPECT_EQ(take(kCmdBackslash), eventHotKeyExistsErr);
  EXPECT_EQ(take({kVK_Space, optionKey | shiftKey}), noErr);
  const GObjectPtr<GSettings> settings(g_settings_new("org.gnome.mutter"));
  g_settings_set_string(settings.get(), "overlay-key", "");
  EXPECT_EQ(take(kCmdBackslash), noErr);
  rename(name);
}

TEST_F(X11Input, SecureEntryGoesWithTheFocusOfOurWindowsAndKeepsHotkeys) {
  keyboard.TISSelectInputSource(*keyboard.TISCopyCurrentASCIICapableKeyboardInputSource());
  keyboard.EnableSecureEventInput();
  ASSERT_EQ(take(kCmdBackslash), noErr);
  for (const XCombination& key : {XCombination{38, 0}, {kCmdBackslash}}) press(key), press(key);
  EXPECT_TRUE(await([&] { return presses.size() >= 2; }));
  EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(field)), "aa");

  // As a menu does that opens and closes.
  GdkSeat* seat = gdk_display_get_default_seat(gdk_display_get_default());
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(gdk_seat_grab(seat, gtk_widget_get_window(window), GDK_SEAT_CAPABILITY_KEYBOARD, TRUE,
                            nullptr, nullptr, nullptr, nullptr),
              GDK_GRAB_SUCCESS);
    gdk_seat_ungrab(seat);
    gdk_display_sync(gdk_display_get_default());
    EXPECT_TRUE(await([&] { return isSecret(); }));
  }

  const Window neighbour = XCreateSimpleWindow(x, DefaultRootWindow(x), 0, 0, 80, 80, 0, 0, 0);
  XMapWindow(x, neighbour);
  EXPECT_TRUE(await([&] { return !isSecret(); }));

  // A press that hides the window, its key let go or held on in front of the neighbour.
  for (const int repetitions : {0, 9}) {
    if (repetitions > 0) XkbSetAutoRepeatRate(x, XkbUseCoreKbd, 30, 10);
    ASSERT_TRUE(awaitFocus() && await([&] { return isSecret(); }));
    presses.clear();
    for (const unsigned key : {133, 51}) others.key(key, true);
    EXPECT_TRUE(await([&] { return !presses.empty(); }));
    gtk_widget_hide(window);
    gdk_display_sync(gdk_display_get_default());
    const int enough = keyPresses + repetitions;
    EXPECT_TRUE(await([&] { return keyPresses >= enough; }));
    for (const unsigned key : {133, 51}) others.key(key, false);
    // The server sends no key anywhere until the window manager has chosen who gets them.
    EXPECT_TRUE(await([] { return xFocus() != 0; }));
    press(kCmdBackslash);
    EXPECT_TRUE(await([&] { return presses.size() >= 2; }));
    EXPECT_EQ(presses.size(), 2U);
  }
  keyboard.DisableSecureEventInput();
  EXPECT_TRUE(awaitFocus());
  EXPECT_FALSE(isSecret());
}

TEST_F(X11Input, TheLatinLayoutInUseIsKeptAndWithoutOneThereIsNone) {
  layOut("us,de", 1);
  keyboard.TISSelectInputSource(*keyboard.TISCopyCurrentASCIICapableKeyboardInputSource());
  EXPECT_TRUE(isLatin());
  layOut("ru");
  EXPECT_FALSE(keyboard.TISCopyCurrentASCIICapableKeyboardInputSource());
}

}  // namespace
}  // namespace norvane
