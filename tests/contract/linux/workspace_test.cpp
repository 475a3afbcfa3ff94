// The application in front as the X server and the window manager have it.

#include <cstdlib>
#include <filesystem>
#include <string>

#include "contract.h"
#include "desktop_worlds.h"

namespace norvane {
namespace {

using namespace std::string_literals;

/// The window that the window manager names in a property of the root window's.
unsigned long claim(const char* property) {
  guchar* window = nullptr;
  gdk_property_get(gdk_get_default_root_window(), gdk_atom_intern(property, FALSE), GDK_NONE, 0, 4,
                   FALSE, nullptr, nullptr, nullptr, &window);
  const std::unique_ptr<guchar, Deleter<g_free>> owned(window);
  return window ? *reinterpret_cast<unsigned long*>(window) : 0;
}

void setClaim(const char* property, unsigned long window) {
  const std::string text = std::to_string(window);
  outputOf({"xprop", "-root", "-f", property, "32x", "-set", property, text.c_str()});
}

TEST(RealWorkspace, LooksBelowItsPanelAndWorksWithoutAWindowManager) {
  DesktopWorkspace session;
  const NSWorkspace& workspace = session.workspace();
  session.open({.name = "Browser"});
  const auto browser = claim("_NET_ACTIVE_WINDOW");
  session.open({.name = "Tool"});
  outputOf({"xdotool", "windowactivate", std::to_string(browser).c_str()});
  EXPECT_TRUE(await([&] { return claim("_NET_ACTIVE_WINDOW") == browser; }));
  auto panel = ownWindow(true);
  EXPECT_TRUE(await([&] {
    const auto active = claim("_NET_ACTIVE_WINDOW");
    return active != browser && active != 0;
  }));
  EXPECT_EQ(front(workspace), "- Browser");
  EXPECT_EQ(middleOfIcon(workspace), 0xFF0000FF);  // the window's own icon
  panel.reset();
  EXPECT_TRUE(await([&] { return claim("_NET_ACTIVE_WINDOW") == browser; }));
  const std::string classOf = "tool\0caf\xE9"s;  // Latin-1, as its standard has it
  XChangeProperty(gdk_x11_get_default_xdisplay(), browser, gdk_x11_get_xatom_by_name("WM_CLASS"),
                  gdk_x11_get_xatom_by_name("STRING"), 8, PropModeReplace,
                  reinterpret_cast<const guchar*>(classOf.data()),
                  static_cast<int>(classOf.size()));
  EXPECT_EQ(front(workspace), "- caf\u00e9");
  // A window may vanish between two looks at it.
  setClaim("_NET_ACTIVE_WINDOW", 0x7FFFFFF);
  EXPECT_EQ(front(workspace), "none");
  // A window manager that died leaves its claims behind.
  const auto manager = claim("_NET_SUPPORTING_WM_CHECK");
  setClaim("_NET_SUPPORTING_WM_CHECK", 0x7FFFFFF);
  EXPECT_EQ(front(workspace), "- caf\u00e9");
  setClaim("_NET_SUPPORTING_WM_CHECK", manager);
}

TEST(RealWorkspace, FindsAProgramWithoutAWindowThatTheHostAsksFor) {
  const X11Workspace workspace(kOwn);
  const std::string program = std::string(std::getenv("HOME")) + "/1password";
  std::filesystem::copy_file("/bin/sleep", program);
  OtherProcess process(
      g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, program.c_str(), "60", nullptr));
  EXPECT_TRUE(runs(workspace, kAskedFor));
  process.reset();
  EXPECT_FALSE(runs(workspace, kAskedFor));
}

}  // namespace
}  // namespace norvane
