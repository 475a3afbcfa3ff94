// What the host relies on of windows: frames that hold at once, on the screen and through hiding,
// and being told of the keyboard's loss, later and once.

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/gtk/gtk_platform.h"
#include "platform/gtk/main_screen.h"
#include "platform/headless/headless_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/stderr_log.h"
#include "platform/ns_panel.h"
#include "platform/ui/played_ui.h"
#include "platform/x11/x11_properties.h"
#include "real_desktop.h"

// Xlib's macros come after everything that they would break.
// clang-format off
#include <X11/Xatom.h>
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
// clang-format on

namespace norvane {
namespace {

bool isAbout(const NSRect& a, const NSRect& b) {
  return std::abs(a.origin.x - b.origin.x) <= 0.5 && a.origin.y == b.origin.y && a.size == b.size;
}

struct World {
  World() { EXPECT_TRUE(::mkdtemp(directory.data())); }
  ~World() { std::filesystem::remove_all(directory); }

  std::string directory = "/tmp/norvane-windows-XXXXXX";
  GlibDispatch dispatch;
  StderrLog log;
  const ScopedLog installedLog{log};
};

struct HeadlessWorld : World {
  HeadlessPlatform host{Profile{}, directory, dispatch, [] {}};

  static NSRect onScreen(const NSWindow& window) { return window.frame(); }
  static void maximise() {}
};

struct RealWorld : World {
  PlayedUi ui;
  GtkPlatform host{directory, dispatch, ui, [] {}};

  static GtkWindow* shownWindow() {
    const std::unique_ptr<GList, Deleter<g_list_free>> all(gtk_window_list_toplevels());
    for (GList* each = all.get(); each; each = each->next) {
      if (gtk_widget_get_mapped(GTK_WIDGET(each->data))) return GTK_WINDOW(each->data);
    }
    return nullptr;
  }

  /// What the X server says of the window.
  static NSRect onScreen(const NSWindow&) {
    Display* const display = gdk_x11_get_default_xdisplay();
    const XWindow window = gdk_x11_window_get_xid(gtk_widget_get_window(GTK_WIDGET(shownWindow())));
    XWindowAttributes client{};
    XGetWindowAttributes(display, window, &client);
    int x = 0;
    int y = 0;
    XWindow child = 0;
    XTranslateCoordinates(display, window, client.root, 0, 0, &x, &y, &child);
    const auto extents = xNumbers(window, "_NET_FRAME_EXTENTS", 4);
    if (client.map_state != IsViewable || extents.size() != 4) return {};
    const auto side = [&](int which) { return static_cast<int>(extents[which]); };
    return mainScreen()->toPoints({x - side(0), y - side(2), client.width + side(0) + side(1),
                                   client.height + side(2) + side(3)});
  }
  static void maximise() {
    gtk_window_maximize(shownWindow());
    EXPECT_TRUE(await([] { return gtk_window_is_maximized(shownWindow()); }));
  }
};

/// Keeps the right and the upper edge of the screen, so that 900 x 700 are visible.
class Dock : OtherClient {
 public:
  Dock() {
    const XWindow root = DefaultRootWindow(display());
    const XWindow window = XCreateSimpleWindow(display(), root, 900, 0, 540, 200, 0, 0, 0);
    const auto set = [&](const char* property, Atom type, std::vector<long> values) {
      XChangeProperty(display(), window, XInternAtom(display(), property, False), type, 32,
                      PropModeReplace, reinterpret_cast<unsigned char*>(values.data()),
                      static_cast<int>(values.size()));
    };
    set("_NET_WM_STRUT", XA_CARDINAL, {0, 540, 200, 0});
    set("_NET_WM_WINDOW_TYPE", XA_ATOM,
        {static_cast<long>(XInternAtom(display(), "_NET_WM_WINDOW_TYPE_DOCK", False))});
    XMapWindow(display(), window);
    XFlush(display());
  }
};

template <class Kind>
class WindowContract : public testing::Test, public Kind {
 public:
  template <class Window>
  std::shared_ptr<Window> make(NSWindowStyleMask mask) {
    return this->host.application.template makeWindow<Window>(NSRect{{100, 100}, {400, 300}}, mask);
  }
  bool hasKeyboard(const NSWindow& window) { return this->host.application.isKey(window); }
  static constexpr NSWindowStyleMask kOrdinary =
      NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskResizable;
};
using Worlds = testing::Types<HeadlessWorld, RealWorld>;
TYPED_TEST_SUITE(WindowContract, Worlds);

struct Resignations : NSWindowDelegate {
  void windowDidResignKey(NSWindow&) override { ++count; }
  int count = 0;
};

TYPED_TEST(WindowContract, AFrameHoldsAtOnceOnTheScreenAndThroughHidingWhateverTheLimits) {
  const auto window = this->template make<NSWindow>(this->kOrdinary);
  window->setMinSize({940, 600});
  NSRect wanted{{40.5, 50}, {820, 600}};
  const auto expectOnScreen = [&](const char* when) {
    EXPECT_EQ(window->frame(), wanted) << when;
    EXPECT_TRUE(await([&] { return isAbout(this->onScreen(*window), wanted); })) << when;
    EXPECT_TRUE(await([&] { return this->dispatch.isQuiet(); }));
    EXPECT_TRUE(isAbout(this->onScreen(*window), wanted) && window->frame() == wanted) << when;
  };
  for (const double x : {40.5, 300.0}) {
    wanted.origin.x = x;
    window->setFrame(wanted, true, true);
    EXPECT_FALSE(window->isVisible());
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    ASSERT_TRUE(await([&] { return this->hasKeyboard(*window); }));
    expectOnScreen("shown");
    this->maximise();
    wanted.size.width += 200;
    window->setFrame(wanted, true, true);
    expectOnScreen("no longer maximised");
    window->orderOut();
  }
}

TEST(RealWindows, EndInsideWhatIsVisible) {
  RealWorld world;
  const Dock dock;
  constexpr NSRect kVisible{{0, 0}, {900, 700}};
  ASSERT_TRUE(await([&] { return world.host.desktop.mainScreenVisibleFrame() == kVisible; }));
  const auto window =
      world.host.application.makeWindow<NSWindow>(kVisible, WindowContract<RealWorld>::kOrdinary);
  world.host.userDefaults.setString("1200 650 1800 300", "NSWindow Frame kept");
  window->setFrameUsingName("kept");
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(await([&] { return world.onScreen(*window) == NSRect{{0, 400}, {900, 300}}; }));
  window->setFrame({{40, 300}, {820, 540}}, true, true);
  EXPECT_TRUE(await([&] {
    return world.onScreen(*window) == NSRect{{40, 160}, {820, 540}};
  })) << "the title bar";
  ASSERT_TRUE(await([&] { return world.dispatch.isQuiet(); }));
  outputOf({"wmctrl", "-r", "Norvane", "-e", "0,-1,-1,816,-1"});
  EXPECT_TRUE(await([&] {
    const NSRect resized = world.onScreen(*window);
    return resized.size.width == 818 && window->frame() == resized;
  })) << "by the person, to the pixel";
}

TYPED_TEST(WindowContract, ThePanelTakesTheKeyboardAndHearsOfItsLossLaterAndOnce) {
  const auto window = this->template make<NSWindow>(this->kOrdinary);
  const auto panel = this->template make<NSPanel>(NSWindowStyleMaskNonactivatingPanel);
  const auto heard = std::make_shared<Resignations>();
  panel->setDelegate(heard);
  window->makeKeyAndOrderFront();
  this->host.application.activateIgnoringOtherApps();
  ASSERT_TRUE(await([&] { return this->hasKeyboard(*window); }));
  for (int time = 1; time <= 2; ++time) {
    panel->makeKeyAndOrderFront();
    ASSERT_TRUE(await([&] { return this->hasKeyboard(*panel) && this->dispatch.isQuiet(); }));
    EXPECT_EQ(heard->count, time - 1);
    if (time == 1) window->makeKeyAndOrderFront();
    if (time == 2) panel->orderOut();
    EXPECT_EQ(heard->count, time - 1) << "inside the call";
    ASSERT_TRUE(await([&] { return heard->count == time && this->hasKeyboard(*window); }));
  }
}

TEST(RealWindows, APanelThatHadTheKeyboardForAMomentHearsOfItsLoss) {
  RealWorld world;
  const auto panel = world.host.application.makeWindow<NSPanel>(
      NSRect{{100, 100}, {400, 300}}, NSWindowStyleMaskNonactivatingPanel);
  const auto heard = std::make_shared<Resignations>();
  panel->setDelegate(heard);
  panel->orderFront();
  ASSERT_TRUE(await([&] { return world.onScreen(*panel) == panel->frame(); }));
  const OtherClient other;
  const XWindow window =
      gdk_x11_window_get_xid(gtk_widget_get_window(GTK_WIDGET(world.shownWindow())));
  for (const XWindow focused : {window, DefaultRootWindow(other.display())}) {
    XSetInputFocus(other.display(), focused, RevertToPointerRoot, CurrentTime);
  }
  XSync(other.display(), False);
  EXPECT_TRUE(await([&] { return heard->count == 1; }));
}

}  // namespace
}  // namespace norvane
