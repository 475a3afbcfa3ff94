#include "platform/gtk/gtk_main.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <glib-unix.h>
#include <gtk/gtk.h>

#include "platform/console/console.h"
#include "platform/explorer/explorer_ui.h"
#include "platform/gtk/gtk_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/host_process.h"
#include "platform/linux/process.h"
#include "platform/session/desktop_bundle.h"
#include "platform/session/journal_log.h"
#include "platform/session/session.h"
#include "platform/session/single_instance.h"
#include "platform/ui/library_ui.h"
#include "platform/ui/played_ui.h"
#include "platform/x11/display_end.h"

namespace norvane {
namespace {

constexpr const char* kApplicationId = "cn.kestrio.norvane";

/// Where the UI lies that is played: in the bundle, unless the command line says otherwise.
UiBundle uiBundleFor(const CommandLine& commandLine) {
  const std::string carried = DesktopBundle().bundlePath() + "/Contents/Frameworks/App.bundle";
  return UiBundle(std::filesystem::absolute(commandLine.uiBundle.value_or(carried)));
}

UiChoice uiFor(const CommandLine& commandLine) {
  if (commandLine.ui) return *commandLine.ui;
  return uiBundleFor(commandLine).exists() ? UiChoice::bundle : UiChoice::explorer;
}

/// The UI, and in `scripted` where the console speaks, if it does.
std::unique_ptr<WindowUi> makeUi(const CommandLine& commandLine, ScriptedUi*& scripted) {
  const UiChoice choice = uiFor(commandLine);
  if (choice == UiChoice::console) {
    auto played = std::make_unique<PlayedUi>();
    scripted = &played->embedder();
    return played;
  }
  if (choice == UiChoice::explorer) {
    auto explorer = std::make_unique<ExplorerUi>();
    if (commandLine.console) scripted = &explorer->embedder();
    return explorer;
  }
  return std::make_unique<LibraryUi>(uiBundleFor(commandLine), commandLine.uiArguments,
                                     DesktopBundle().infoTexts("UIPlugins"));
}

/// False without a display that can be used.
bool initToolkit(bool drawsWithGl) {
  g_set_prgname(kApplicationId);  // by which desktops find the application's entry
  g_set_application_name("Norvane");
  gdk_set_allowed_backends("x11");
  gdk_set_program_class(kApplicationId);
  // The built-in views draw without GL, whose libraries the toolkit would load for the first
  // program of a display. It is read here and no more, so that programs that the host starts do not
  // inherit it.
  if (!drawsWithGl && !environmentVariable("GDK_GL")) {
    g_setenv("GDK_GL", "disable", FALSE);
    gdk_parse_args(nullptr, nullptr);
    g_unsetenv("GDK_GL");
  }
  if (!gtk_init_check(nullptr, nullptr)) return false;
  // What screen readers say; the toolkit would tell them the program's name, which is the id.
  ATK_OBJECT_GET_CLASS(atk_get_root())->get_name = [](AtkObject*) {
    return g_get_application_name();
  };
  return true;
}

void quitOnSignals(GlibDispatch& dispatch) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    g_unix_signal_add(
        signal,
        [](gpointer data) -> gboolean {
          static_cast<GlibDispatch*>(data)->quit();
          return G_SOURCE_CONTINUE;
        },
        &dispatch);
  }
}

/// The application's icon for all windows. The default reaches only those to come.
void nameIcons() {
  gtk_window_set_default_icon_name(kApplicationId);
  GList* const windows = gtk_window_list_toplevels();
  for (GList* at = windows; at; at = at->next) {
    gtk_window_set_icon_name(GTK_WINDOW(at->data), kApplicationId);
  }
  g_list_free(windows);
}

/// Loads what needs icon themes when there is nothing else to do, so that neither the UI's first
/// frame nor the first hotkey need wait for them: the windows' icon, and those of other
/// applications.
void loadIconsWhenIdle(X11Workspace& workspace) {
  g_idle_add_full(
      G_PRIORITY_LOW,
      [](gpointer data) -> gboolean {
        nameIcons();
        static_cast<X11Workspace*>(data)->warmUp();
        return G_SOURCE_REMOVE;
      },
      &workspace, nullptr);
}

/// For a portal that never answers.
void forbidDebuggersLater() {
  constexpr unsigned kLongestStart = 30;  // seconds
  g_timeout_add_seconds(
      kLongestStart,
      [](gpointer) -> gboolean {
        forbidDebuggers();
        return G_SOURCE_REMOVE;
      },
      nullptr);
}

/// The person speaks to the real desktop, not to its console.
void refuseDesktopEvent(const std::string& event, JsonDocument&, JsonWriter&) {
  throw JsonError("the real desktop takes no event \"" + event + "\" from the console");
}

/// The whole life of the host. `threadsStay` when the UI's run on after it.
int runHost(const CommandLine& commandLine, const MainInterface& mainInterface, bool& threadsStay) {
  prepareProcess();
  // The display may go away at the very end of the process, and says so then.
  static JournalLog log;
  static const ScopedLog installed(log);
  if (commandLine.quit) {
    const auto failure = SingleInstance::quitRunning(kApplicationId);
    return failure ? refuse(kExitNoDesktop, *failure) : 0;
  }
  // The desktop's portal looks into a process before it serves its connection for the first time,
  // and serves none that it may not look into. On a Wayland session the hotkey comes from there.
  const bool isLookedInto = isWaylandSession();
  const auto forbidUnlessAllowed = [&] {
    if (!commandLine.allowDebugger) forbidDebuggers();
  };
  if (!isLookedInto) forbidUnlessAllowed();
  const bool drawsWithGl =
      uiFor(commandLine) == UiChoice::bundle && uiBundleFor(commandLine).missing().empty();
  if (!initToolkit(drawsWithGl)) {
    return refuse(kExitNoDesktop,
                  "the display cannot be used; --platform headless runs without one");
  }

  GlibDispatch dispatch;
  // The one connection of the process. Kept, because whoever opened it anew would have the bus's
  // end be the process's.
  const auto bus = sessionBus();
  SingleInstance instance(kApplicationId);
  if (instance.isSecond()) {
    // A session that starts what runs already is no person who wants to see it.
    if (!commandLine.atLogin || !commandLine.links.empty()) instance.handOver(commandLine.links);
    gdk_notify_startup_complete();
    return 0;
  }
  std::optional<DataDirectory> directory;
  ScriptedUi* scripted = nullptr;
  const auto ui = makeUi(commandLine, scripted);
  std::optional<GtkPlatform> host;
  const auto refused = openHost(commandLine.dataDirectory, directory, [&](const std::string& path) {
    host.emplace(
        path, dispatch, *ui, [&] { dispatch.quit(); }, forbidUnlessAllowed);
  });
  if (refused) return *refused;
  endWithDisplay();
  std::optional<Console> console;
  if (scripted) console.emplace(*scripted, dispatch, &refuseDesktopEvent);
  quitOnSignals(dispatch);
  host->desktop.launch(mainInterface, /*takesKeyboard=*/!commandLine.atLogin);
  if (isLookedInto && !commandLine.allowDebugger) forbidDebuggersLater();
  instance.listen(
      [&](const std::string& link) {
        host->eventTime.set(0);
        host->application.openURL(link);
      },
      [&] {
        host->eventTime.set(0);
        host->application.reopen();
      },
      [&] { dispatch.quit(); });
  for (const std::string& link : commandLine.links) {
    dispatch.mainAsync([&host, link] { host->application.openURL(link); });
  }
  if (console) console->start();
  ui->whenDrawn([&] { loadIconsWhenIdle(host->workspace); });
  dispatch.run();
  threadsStay = ui->processEnds();
  return 0;
}

}  // namespace

int runGtk(const CommandLine& commandLine, const MainInterface& mainInterface) {
  bool threadsStay = false;
  const int status = runHost(commandLine, mainInterface, threadsStay);
  if (threadsStay) {
    std::fflush(nullptr);
    std::_Exit(status);
  }
  return status;
}

}  // namespace norvane
