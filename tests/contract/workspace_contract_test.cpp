// Which application is in front, and which run.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gtk/gtk.h>

#include "platform/headless/headless_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/stderr_log.h"
#include "platform/x11/event_time.h"
#include "platform/x11/x11_workspace.h"
#include "real_desktop.h"

// Xlib's macros come after everything that they would break.
#include <gdk/gdkx.h>

namespace norvane {
namespace {

using namespace std::string_literals;

constexpr const char* kOwn = "cn.kestrio.norvane";
constexpr const char* kAskedFor = "com.1password.1password";
using Application = Profile::Application;

class HeadlessSession {
 public:
  HeadlessSession() { platform_.setProfile(Profile{.applications = {}}); }
  NSWorkspace& workspace() { return platform_.desktop; }
  void open(Application application) {
    application.active = true;
    platform_.desktop.launchApplication(application);
  }
  void openOwn() { platform_.desktop.activateIgnoringOtherApps(); }

 private:
  GlibDispatch dispatch_;
  StderrLog log_;
  const ScopedLog installedLog_{log_};
  HeadlessPlatform platform_{{}, std::getenv("HOME"), dispatch_, [] {}};
};

std::string front(const NSWorkspace& workspace) {
  const auto application = workspace.frontmostApplication();
  if (!application) return "none";
  return application->bundleIdentifier.value_or("-") + ' ' +
         application->localizedName.value_or("-");
}

void end(GSubprocess* process) {
  g_subprocess_force_exit(process);
  g_subprocess_wait(process, nullptr, nullptr);
  g_object_unref(process);
}
using OtherProcess = std::unique_ptr<GSubprocess, Deleter<end>>;
using OwnWindow = std::unique_ptr<GtkWidget, Deleter<gtk_widget_destroy>>;

OwnWindow ownWindow(bool isPanel) {
  OwnWindow window(gtk_window_new(GTK_WINDOW_TOPLEVEL));
  gtk_window_set_skip_taskbar_hint(GTK_WINDOW(window.get()), isPanel);
  gtk_widget_show(window.get());
  gtk_window_present(GTK_WINDOW(window.get()));
  return window;
}

class RealSession {
 public:
  RealSession() {
    EventTime().last();  // from now on changes of the root window's properties turn the main loop
    // The windows of the test before this may not be gone yet.
    EXPECT_TRUE(await([&] { return front(workspace_) == "none"; }));
  }
  NSWorkspace& workspace() { return workspace_; }

  void open(const Application& application) {
    const auto& id = application.bundleIdentifier;
    if (id) {
      const std::filesystem::path data = std::getenv("XDG_DATA_HOME");
      std::filesystem::create_directories(data / "applications");
      std::ofstream(data / "applications" / (*id + ".desktop"))
          << "[Desktop Entry]\nType=Application\nExec=true\nIcon=accessories-calculator\n"
          << "StartupWMClass=Class\nName=" << *application.name;
    }
    programs_.emplace_back(g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, "/usr/bin/python3",
                                            NORVANE_TOOLS "/other_application.py", "window",
                                            id ? "Class" : application.name->c_str(), nullptr));
    awaitInFront(*application.name);
  }
  void openOwn() {
    own_ = ownWindow(false);
    awaitInFront("Norvane");
  }

 private:
  void awaitInFront(const std::string& name) {
    EXPECT_TRUE(await([&] { return front(workspace_).ends_with(' ' + name); })) << name;
  }
  X11Workspace workspace_{kOwn};
  std::vector<OtherProcess> programs_;
  OwnWindow own_;
};

/// The colour in the middle of the icon in front, as it reaches the UI.
std::uint32_t middleOfIcon(const NSWorkspace& workspace) {
  const auto bitmap = HeadlessGraphics(LiveProfile({})).makeBitmapImageRep(64);
  EXPECT_TRUE(bitmap->draw(*workspace.frontmostApplication().value().icon));
  const auto png = bitmap->pngRepresentation().value();
  const GObjectPtr<GInputStream> file(
      g_memory_input_stream_new_from_data(png.data(), static_cast<gssize>(png.size()), nullptr));
  const GObjectPtr<GdkPixbuf> icon(gdk_pixbuf_new_from_stream(file.get(), nullptr, nullptr));
  EXPECT_TRUE(gdk_pixbuf_get_width(icon.get()) == 64 && gdk_pixbuf_get_height(icon.get()) == 64);
  const guchar* rgba = gdk_pixbuf_read_pixels(icon.get()) + (32 * 64 + 32) * 4;
  return rgba[0] << 24U | rgba[1] << 16U | rgba[2] << 8U | rgba[3];
}

bool runs(const NSWorkspace& workspace, const std::string& identifier) {
  const auto running = workspace.runningApplications();
  return std::ranges::count(running, identifier, &NSRunningApplication::bundleIdentifier) == 1;
}

template <class Session>
class WorkspaceContract : public testing::Test {};
using Sessions = testing::Types<HeadlessSession, RealSession>;
TYPED_TEST_SUITE(WorkspaceContract, Sessions);

TYPED_TEST(WorkspaceContract, TellsWhatIsKnownOfTheApplicationInFront) {
  TypeParam session;
  const NSWorkspace& workspace = session.workspace();
  EXPECT_EQ(front(workspace), "none");
  session.open({.bundleIdentifier = "org.example.editor", .name = "Editor", .icon = true});
  EXPECT_EQ(front(workspace), "org.example.editor Editor");
  EXPECT_EQ(middleOfIcon(workspace) & 0xFF, 0xFFU) << "nothing was painted";
  session.open({.name = "Tool"});
  EXPECT_EQ(front(workspace), "- Tool");
  session.openOwn();
  EXPECT_EQ(front(workspace), kOwn + std::string(" Norvane"));
  EXPECT_TRUE(runs(workspace, "org.example.editor") && runs(workspace, kOwn));
  EXPECT_FALSE(runs(workspace, kAskedFor));
}

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
  RealSession session;
  const NSWorkspace& workspace = session.workspace();
  session.open({.name = "Browser"});
  const auto browser = claim("_NET_ACTIVE_WINDOW");
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
