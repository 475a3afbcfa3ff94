// Windows among others on the X server, and on a screen that is too small for them.

#include <memory>
#include <vector>

#include <X11/Xatom.h>

#include "contract.h"
#include "desktop_worlds.h"
#include "platform/ns_panel.h"

namespace norvane {
namespace {

/// Keeps the right and the upper edge of the screen, so that 1140 x 700 are visible.
class Dock : OtherClient {
 public:
  Dock() {
    const XWindow root = DefaultRootWindow(display());
    const XWindow window = XCreateSimpleWindow(display(), root, 1140, 0, 300, 200, 0, 0, 0);
    const auto set = [&](const char* property, Atom type, std::vector<long> values) {
      XChangeProperty(display(), window, XInternAtom(display(), property, False), type, 32,
                      PropModeReplace, reinterpret_cast<unsigned char*>(values.data()),
                      static_cast<int>(values.size()));
    };
    set("_NET_WM_STRUT_PARTIAL", XA_CARDINAL, {0, 300, 200, 0, 0, 0, 0, 899, 0, 1439, 0, 0});
    set("_NET_WM_WINDOW_TYPE", XA_ATOM,
        {static_cast<long>(XInternAtom(display(), "_NET_WM_WINDOW_TYPE_DOCK", False))});
    XMapWindow(display(), window);
    XFlush(display());
  }
};

TEST(RealWindows, EndInsideWhatIsVisible) {
  DesktopWindows world;
  const Dock dock;
  constexpr NSRect kVisible{{0, 0}, {1140, 700}};
  ASSERT_TRUE(await([&] { return world.host.desktop.mainScreenVisibleFrame() == kVisible; }));
  const auto window = world.host.application.makeWindow<NSWindow>(kVisible, kOrdinary);
  world.host.userDefaults.setString("1200 650 1800 300", "NSWindow Frame kept");
  window->setFrameUsingName("kept");
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(await([&] { return world.onScreen(*window) == NSRect{{0, 400}, {1140, 300}}; }));
  window->setFrame({{40, 300}, {820, 540}}, true, true);
  EXPECT_TRUE(await([&] {
    return world.onScreen(*window) == NSRect{{40, 160}, {820, 540}};
  })) << "the title bar";
  ASSERT_TRUE(await([&] { return world.dispatch.isQuiet(); }));
  outputOf({"wmctrl", "-r", "Norvane", "-e", "0,-1,-1,816,-1"});
  EXPECT_TRUE(await([&] {
    const NSRect resized = world.onScreen(*window);
    return resized.size.width == 816 + world.decoration().width && window->frame() == resized;
  })) << "by the person, to the pixel";
}

TEST(RealWindows, APanelThatHadTheKeyboardForAMomentHearsOfItsLoss) {
  DesktopWindows world;
  const auto panel = world.host.application.makeWindow<NSPanel>(
      NSRect{{100, 100}, {400, 300}}, NSWindowStyleMaskNonactivatingPanel);
  const auto heard = std::make_shared<Resignations>();
  panel->setDelegate(heard);
  panel->orderFront();
  ASSERT_TRUE(
      await([&] { return world.onScreen(*panel) == panel->frame() && world.dispatch.isQuiet(); }));
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
