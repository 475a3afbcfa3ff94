#include "platform/x11/x11_workspace.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string_view>
#include <system_error>

#include <X11/Xlib.h>
#include <gdk/gdkx.h>
#include <gio/gdesktopappinfo.h>
#include <gtk/gtk.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/utf8.h"
#include "platform/linux/pixbuf_graphics.h"
#include "platform/x11/x11_focus.h"

namespace norvane {
namespace {

constexpr int kIconSide = 64;
constexpr long kMostWindows = 4096;
constexpr long kMostIconNumbers = 1 << 20;  // 4 MiB

/// A program under the names that its packages install.
struct KnownProgram {
  std::string_view name;  ///< of the desktop entry and of the executable
  std::string_view bundleIdentifier;
};
// The vendor's .deb, .rpm and archive; its snap; its Flatpak.
constexpr std::array<KnownProgram, 3> kKnownPrograms{{
    {"1password", "com.1password.1password"},
    {"1password_1password", "com.1password.1password"},
    {"com.onepassword.OnePassword", "com.1password.1password"},
}};

/// The identifier that the host knows the program by; empty when it does not.
std::string_view identifierOf(std::string_view programName) {
  const auto found = std::ranges::find(kKnownPrograms, programName, &KnownProgram::name);
  return found == kKnownPrograms.end() ? std::string_view() : found->bundleIdentifier;
}

// Windows

XWindow root() { return gdk_x11_get_default_root_xwindow(); }
Display* xDisplay() { return gdk_x11_get_default_xdisplay(); }

/// The windows of applications, the topmost first.
std::vector<XWindow> applicationWindows() {
  std::vector<XWindow> windows;
  if (isWindowManaged()) {
    windows = xNumbers(root(), "_NET_CLIENT_LIST_STACKING", kMostWindows);
  } else {
    windows = family(root()).children;
    std::erase_if(windows, [](XWindow window) {
      XWindowAttributes attributes{};
      return XGetWindowAttributes(xDisplay(), window, &attributes) == 0 ||
             attributes.map_state != IsViewable || xText(window, "WM_CLASS").empty();
    });
  }
  std::ranges::reverse(windows);
  return windows;
}

/// Nothing when the window does not say, or belongs to another machine.
std::optional<pid_t> processOf(XWindow window) {
  const auto process = static_cast<pid_t>(xNumber(window, "_NET_WM_PID"));
  const std::string machine = xText(window, "WM_CLIENT_MACHINE");
  if (process == 0 || (!machine.empty() && machine != g_get_host_name())) return std::nullopt;
  return process;
}

bool isAside(XWindow window) {
  return xHasAtom(window, "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR") ||
         xHasAtom(window, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_UTILITY");
}

bool isOwnPanel(XWindow window) { return processOf(window) == ::getpid() && isAside(window); }

/// Whether it can be what the person sees in front, once the windows above it are taken away.
bool canBeInFront(XWindow window) {
  constexpr unsigned long kAllDesktops = 0xFFFFFFFF;
  const auto desktop = xNumbers(window, "_NET_WM_DESKTOP", 1);
  const bool isHere = desktop.empty() || desktop.front() == kAllDesktops ||
                      desktop.front() == xNumber(root(), "_NET_CURRENT_DESKTOP");
  return isHere && !isAside(window) && !xHasAtom(window, "_NET_WM_STATE", "_NET_WM_STATE_HIDDEN") &&
         !xHasAtom(window, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK") &&
         !xHasAtom(window, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DESKTOP");
}

// Processes

std::string executableOf(pid_t process) {
  std::error_code unreadable;
  std::string path =
      std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", unreadable);
  constexpr std::string_view kReplaced = " (deleted)";  // by an update
  if (path.ends_with(kReplaced)) path.resize(path.size() - kReplaced.size());
  return path;
}

bool isOwnUsers(const std::filesystem::path& process) {
  struct stat facts {};
  return ::stat(process.c_str(), &facts) == 0 && facts.st_uid == ::getuid();
}

/// The identifiers of the person's running programs that the host asks for, windows or not.
std::set<std::string> knownPrograms() {
  std::set<std::string> running;
  std::error_code ended;
  for (std::filesystem::directory_iterator entry("/proc", ended), end; !ended && entry != end;
       entry.increment(ended)) {
    std::string name;
    std::getline(std::ifstream(entry->path() / "comm"), name);
    const std::string_view identifier = identifierOf(name);
    if (!identifier.empty() && isOwnUsers(entry->path())) running.emplace(identifier);
  }
  return running;
}

// Icons

Pixbuf themeIcon(GIcon* icon) {
  const GObjectPtr<GtkIconInfo> found(gtk_icon_theme_lookup_by_gicon(
      gtk_icon_theme_get_default(), icon, kIconSide, GTK_ICON_LOOKUP_FORCE_SIZE));
  return found ? Pixbuf::adopt(gtk_icon_info_load_icon(found.get(), nullptr)) : Pixbuf();
}

/// The window's own icon in the smallest size that need not be enlarged, or the largest.
Pixbuf windowIcon(XWindow window) {
  const XErrorsForgiven forgiven;
  const auto numbers = xNumbers(window, "_NET_WM_ICON", kMostIconNumbers);
  const unsigned long* best = nullptr;
  for (std::size_t at = 0; at + 2 < numbers.size();) {
    const unsigned long* icon = &numbers[at];
    const unsigned long width = icon[0];
    const unsigned long height = icon[1];
    const std::size_t room = numbers.size() - at - 2;
    if (width == 0 || height == 0 || width > room || height > room / width) break;
    const bool isEnough = width >= kIconSide;
    const bool isBetter = !best || (isEnough ? *best < kIconSide || width < *best : width > *best);
    if (isBetter) best = icon;
    at += 2 + width * height;
  }
  if (!best) return {};
  const auto width = static_cast<int>(best[0]);
  const auto height = static_cast<int>(best[1]);
  Pixbuf pixels = Pixbuf::make(width, height);
  for (int y = 0; pixels && y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto argb =
          static_cast<std::uint32_t>(best[2 + static_cast<std::size_t>(y) * width + x]);
      pixels.set(x, y, argb << 8 | argb >> 24);
    }
  }
  return pixels;
}

/// The application's icon, else its window's; null when it has neither. `window` may be 0.
std::shared_ptr<NSImage> iconOf(const std::string& name, GDesktopAppInfo* entry, XWindow window) {
  GIcon* const themed = entry ? g_app_info_get_icon(G_APP_INFO(entry)) : nullptr;
  if (!themed && (window == 0 || xNumber(window, "_NET_WM_ICON") == 0)) return nullptr;
  // Functions are copied, and the entry may go before the icon is painted.
  const std::shared_ptr<GIcon> icon(themed ? G_ICON(g_object_ref(themed)) : nullptr,
                                    [](GIcon* owned) { g_clear_object(&owned); });
  return std::make_shared<PixbufImage>(name, NSSize{kIconSide, kIconSide}, [icon, window] {
    Pixbuf pixels = icon ? themeIcon(icon.get()) : Pixbuf();
    return pixels || window == 0 ? std::move(pixels) : windowIcon(window);
  });
}

}  // namespace

void X11Workspace::warmUp() {
  entries_.load();
  frontmostApplication();
  const GObjectPtr<GIcon> any(g_themed_icon_new("application-x-executable"));
  if (const Pixbuf pixels = themeIcon(any.get())) pixels.png();
  // Most icons are of this format, whose library is loaded when the first one is read.
  static constexpr std::string_view kPicture =
      R"(<svg xmlns="http://www.w3.org/2000/svg" width="1" height="1"/>)";
  const GObjectPtr<GInputStream> file(
      g_memory_input_stream_new_from_data(kPicture.data(), kPicture.size(), nullptr));
  Pixbuf::adopt(gdk_pixbuf_new_from_stream(file.get(), nullptr, nullptr));
}

NSRunningApplication X11Workspace::ownApplication() const {
  const auto entry = entries_.withId(ownBundleIdentifier_.value_or(""));
  const std::string name = entry ? g_app_info_get_name(G_APP_INFO(entry.get())) : "Norvane";
  return {ownBundleIdentifier_, name, iconOf(name, entry.get(), 0)};
}

std::optional<NSRunningApplication> X11Workspace::applicationOf(XWindow window) const {
  const auto process = processOf(window);
  if (process == ::getpid()) return ownApplication();
  DesktopEntries::Traces traces;
  traces.applicationId = xText(window, "_GTK_APPLICATION_ID");
  if (process) traces.executable = executableOf(*process);
  // Two texts, each with a zero behind it.
  const std::string names = utf8OfLatin1(xText(window, "WM_CLASS"));
  traces.instance = names.substr(0, names.find('\0'));
  if (traces.instance.size() < names.size()) {
    traces.windowClass = names.c_str() + traces.instance.size() + 1;
  }

  NSRunningApplication application;
  const auto entry = entries_.find(traces);
  if (entry) {
    std::string id = g_app_info_get_id(G_APP_INFO(entry.get()));
    if (id.ends_with(".desktop")) id.resize(id.size() - std::string_view(".desktop").size());
    const std::string_view known = identifierOf(id);
    application.bundleIdentifier = known.empty() ? utf8Of(id) : known;
    application.localizedName = g_app_info_get_name(G_APP_INFO(entry.get()));
  } else if (!traces.windowClass.empty()) {
    application.localizedName = traces.windowClass;
  } else if (!traces.executable.empty()) {
    application.localizedName =
        utf8Of(std::filesystem::path(traces.executable).filename().string());
  } else {
    return std::nullopt;  // gone meanwhile, or says nothing of itself
  }
  application.icon = iconOf(*application.localizedName, entry.get(), window);
  return application;
}

std::vector<NSRunningApplication> X11Workspace::runningApplications() const {
  const XErrorsForgiven forgiven;
  std::vector<NSRunningApplication> running;
  std::set<std::string> seen{ownBundleIdentifier_.value_or("")};
  for (const XWindow window : applicationWindows()) {
    auto application = applicationOf(window);
    if (!application) continue;
    const std::string identity = application->bundleIdentifier ? *application->bundleIdentifier
                                                               : *application->localizedName;
    if (seen.insert(identity).second) running.push_back(*std::move(application));
  }
  for (const std::string& identifier : knownPrograms()) {
    if (seen.insert(identifier).second) running.push_back({identifier, std::nullopt, nullptr});
  }
  running.push_back(ownApplication());
  return running;
}

std::optional<NSRunningApplication> X11Workspace::frontmostApplication() const {
  const XErrorsForgiven forgiven;
  XWindow front = xActiveWindow();
  if (front != 0 && isOwnPanel(front)) {
    const auto windows = applicationWindows();
    const auto below = std::ranges::find_if(windows, canBeInFront);
    front = below == windows.end() ? 0 : *below;
  }
  return front == 0 ? std::nullopt : applicationOf(front);
}

}  // namespace norvane
