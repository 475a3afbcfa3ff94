// Secure entry and input sources: the simulated keyboard and the X server's.

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "platform/gtk/x11_hotkeys.h"
#include "platform/gtk/x11_keyboard.h"
#include "platform/headless/headless_services.h"
#include "platform/linux/glib_dispatch.h"
#include "x11_person.h"

namespace norvane {
namespace {

/// With two layouts, of which the second has Latin letters.
class Simulated {
 public:
  KeyboardInput& keyboard() { return keyboard_; }
  bool isSecret() { return keyboard_.isSecure(); }
  bool isLatin() { return keyboard_.inputSource() == "com.example.keylayout.ABC"; }

 private:
  LiveProfile profile_{Profile{}};
  HeadlessKeyboard keyboard_{profile_};
};

/// A window with a text field, which has the focus.
class Real {
 public:
  Real() {
    layOut("ru,us");
    gtk_container_add(GTK_CONTAINER(window_), field_);
    gtk_widget_show_all(window_);
    EXPECT_TRUE(awaitFocus());
  }
  ~Real() {
    gtk_widget_destroy(window_);
    layOut("us");
  }
  KeyboardInput& keyboard() { return keyboard_; }
  bool isSecret() { return !canGrabKeyboard(others_); }
  bool isLatin() { return currentLayout(others_) == 1; }

  bool awaitFocus() {
    gtk_window_present(GTK_WINDOW(window_));
    const bool has = await(
        [this] { return gtk_window_is_active(GTK_WINDOW(window_)) && isFocusSettled(window_); });
    while (gtk_events_pending()) gtk_main_iteration();  // what tells of it
    return has;
  }
  std::string text() const { return gtk_entry_get_text(GTK_ENTRY(field_)); }
  OtherClient& others() { return others_; }
  GtkWidget* window() { return window_; }

 private:
  OtherClient others_;
  GtkWidget* window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* field_ = gtk_entry_new();
  X11Keyboard keyboard_;
};

template <class World>
class KeyboardContract : public testing::Test {
 protected:
  World world_;
  KeyboardInput& keyboard_ = world_.keyboard();
};

using Worlds = testing::Types<Simulated, Real>;
TYPED_TEST_SUITE(KeyboardContract, Worlds);

TYPED_TEST(KeyboardContract, SecureEntryIsNotCountedAndALayoutCanBeChosenAndRestored) {
  KeyboardInput& keyboard = this->keyboard_;
  const auto before = keyboard.TISCopyCurrentKeyboardInputSource();
  const auto latin = keyboard.TISCopyCurrentASCIICapableKeyboardInputSource();
  ASSERT_TRUE(before && latin);
  EXPECT_FALSE(this->world_.isLatin() || this->world_.isSecret());
  keyboard.TISSelectInputSource(*latin);
  keyboard.EnableSecureEventInput();
  keyboard.EnableSecureEventInput();
  EXPECT_TRUE(await([&] { return this->world_.isLatin() && this->world_.isSecret(); }));
  keyboard.DisableSecureEventInput();
  keyboard.TISSelectInputSource(*before);
  EXPECT_TRUE(await([&] { return !this->world_.isLatin() && !this->world_.isSecret(); }));
  keyboard.DisableSecureEventInput();
}

using X11KeyboardTest = KeyboardContract<Real>;

TEST_F(X11KeyboardTest, TheGrabGoesWithTheFocusOfOurWindows) {
  keyboard_.EnableSecureEventInput();
  ASSERT_TRUE(world_.isSecret());
  OtherClient neighbour;
  focusWindowOf(neighbour);
  EXPECT_TRUE(await([&] { return !world_.isSecret(); }));
  ASSERT_TRUE(world_.awaitFocus());
  EXPECT_TRUE(await([&] { return world_.isSecret(); }));

  // As a menu does that opens and closes.
  GdkSeat* seat = gdk_display_get_default_seat(gdk_display_get_default());
  GdkWindow* menu = gtk_widget_get_window(world_.window());
  ASSERT_EQ(gdk_seat_grab(seat, menu, GDK_SEAT_CAPABILITY_KEYBOARD, TRUE, nullptr, nullptr, nullptr,
                          nullptr),
            GDK_GRAB_SUCCESS);
  gdk_seat_ungrab(seat);
  gdk_display_sync(gdk_display_get_default());
  EXPECT_TRUE(await([&] { return world_.isSecret(); }));

  GtkWidget* panel = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_show(panel);
  EXPECT_TRUE(await([&] {
    return gtk_window_is_active(GTK_WINDOW(panel)) &&
           !gtk_window_is_active(GTK_WINDOW(world_.window())) && world_.isSecret();
  }));
  gtk_widget_hide(panel);
  EXPECT_TRUE(await(
      [&] { return gtk_window_is_active(GTK_WINDOW(world_.window())) && world_.isSecret(); }));
  gtk_widget_destroy(panel);
}

TEST_F(X11KeyboardTest, WhatIsTypedArrivesAndTheHotkeyToo) {
  GlibDispatch dispatch;
  EventTime time;
  X11Hotkeys hotkeys(time, dispatch);
  int presses = 0;
  std::optional<EventHandlerRef> handler;
  std::optional<EventHotKeyRef> hotkey;
  const auto pressed = [&](const CarbonEvent&) { return ++presses, noErr; };
  hotkeys.InstallEventHandler(pressed, {kEventClassKeyboard, kEventHotKeyPressed}, handler);
  ASSERT_EQ(hotkeys.RegisterEventHotKey(kVK_Space, cmdKey, {}, hotkey), noErr);

  keyboard_.TISSelectInputSource(*keyboard_.TISCopyCurrentASCIICapableKeyboardInputSource());
  keyboard_.EnableSecureEventInput();
  for (int i = 1; i <= 2; ++i) {
    world_.others().press(38);  // a
    world_.others().press(65, {133});
    world_.others().press(56);  // b
    EXPECT_TRUE(await([&] { return presses >= i && world_.text().size() >= 2U * i; }));
  }
  EXPECT_EQ(presses, 2);
  EXPECT_EQ(world_.text(), "abab");
}

TEST_F(X11KeyboardTest, TheLatinLayoutInUseIsKeptAndWithoutOneThereIsNone) {
  layOut("ru,us,de");
  chooseLayout(world_.others(), 2);
  const auto latin = keyboard_.TISCopyCurrentASCIICapableKeyboardInputSource();
  ASSERT_TRUE(latin);
  keyboard_.TISSelectInputSource(*latin);
  EXPECT_EQ(currentLayout(world_.others()), 2);
  layOut("ru");
  EXPECT_FALSE(keyboard_.TISCopyCurrentASCIICapableKeyboardInputSource());
}

}  // namespace
}  // namespace norvane
