#include "platform/linux/command_line.h"

#include <cstdio>
#include <memory>
#include <string_view>

#include <glib.h>

#include "base/utf8.h"
#include "platform/linux/data_directory.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/version.h"

namespace norvane {
namespace {

using Context = std::unique_ptr<GOptionContext, Deleter<g_option_context_free>>;
using Arguments = std::unique_ptr<char*, Deleter<g_strfreev>>;

CommandLine ended(int exitStatus) {
  CommandLine commandLine;
  commandLine.exitStatus = exitStatus;
  return commandLine;
}

CommandLine refused(int exitStatus, const std::string& message) {
  std::fprintf(stderr, "Norvane: %s\n", message.c_str());
  return ended(exitStatus);
}

CommandLine usageError(const std::string& message) {
  return refused(kExitUsage, message + " (try --help)");
}

bool isLink(const char* argument) {
  const GTextPtr scheme(g_uri_parse_scheme(argument));
  return scheme && g_ascii_strcasecmp(scheme.get(), "norvane") == 0;
}

std::optional<UiChoice> uiNamed(std::string_view name) {
  if (name == "bundle") return UiChoice::bundle;
  if (name == "explorer") return UiChoice::explorer;
  if (name == "console") return UiChoice::console;
  return std::nullopt;
}

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
  char* platformArgument = nullptr;
  char* profileArgument = nullptr;
  char* directoryArgument = nullptr;
  char* uiArgument = nullptr;
  char* bundleArgument = nullptr;
  char** programArguments = nullptr;
  gboolean allowDebugger = FALSE;
  gboolean atLogin = FALSE;
  gboolean console = FALSE;
  gboolean quit = FALSE;
  gboolean startedByBus = FALSE;  // which says itself what it wants
  gboolean version = FALSE;
  const GOptionEntry entries[] = {
      {"platform", 0, 0, G_OPTION_ARG_STRING, &platformArgument,
       "The desktop to run on: gtk, the default, or headless", "NAME"},
      {"desktop", 0, 0, G_OPTION_ARG_FILENAME, &profileArgument, "Describes the headless desktop",
       "PROFILE.json"},
      {"ui", 0, 0, G_OPTION_ARG_STRING, &uiArgument,
       "What plays the UI on the gtk platform: bundle, the default where Norvane.app has one; "
       "explorer, the default otherwise; or console",
       "NAME"},
      {"console", 0, 0, G_OPTION_ARG_NONE, &console, "Let the console speak beside the explorer",
       nullptr},
      {"ui-bundle", 0, 0, G_OPTION_ARG_FILENAME, &bundleArgument,
       "Where the UI lies that is played, instead of in Norvane.app", "DIR"},
      {"ui-argument", 0, 0, G_OPTION_ARG_STRING_ARRAY, &programArguments,
       "Hand TEXT to the UI program, behind the host's own arguments; may be repeated", "TEXT"},
      {"allow-debugger", 0, 0, G_OPTION_ARG_NONE, &allowDebugger,
       "Let processes of the same user look into this one", nullptr},
      {"at-login", 0, 0, G_OPTION_ARG_NONE, &atLogin,
       "Started with the session: do not take the keyboard", nullptr},
      {"quit", 0, 0, G_OPTION_ARG_NONE, &quit, "End the instance that runs, and start none",
       nullptr},
      {"gapplication-service", 0, G_OPTION_FLAG_HIDDEN, G_OPTION_ARG_NONE, &startedByBus,
       "Started by the session bus", nullptr},
      {"data-dir", 0, 0, G_OPTION_ARG_FILENAME, &directoryArgument,
       "Where everything is kept; by default in the XDG data home", "DIR"},
      {"version", 0, 0, G_OPTION_ARG_NONE, &version, "Print the version and the commit", nullptr},
      {},
  };
  const Context context(g_option_context_new("[LINK…] - the desktop host of a password manager"));
  g_option_context_set_summary(
      context.get(),
      "LINK is an address that begins with norvane: and goes to the instance that runs already,\n"
      "where one does. On the headless desktop, with --ui console and with --console, standard "
      "input\n"
      "and output speak the console protocol: one JSON object a line, see console.md.");
  g_option_context_set_description(context.get(),
                                   "Environment:\n"
                                   "  NORVANE_RUST_LIB_PATH      Where the core library is, before "
                                   "Norvane.app is looked into\n");
  g_option_context_add_main_entries(context.get(), entries, nullptr);
  g_option_context_set_help_enabled(context.get(), FALSE);
  gboolean help = FALSE;
  const GOptionEntry helpEntry[] = {
      {"help", 'h', 0, G_OPTION_ARG_NONE, &help, "Print this help", nullptr}, {}};
  g_option_context_add_main_entries(context.get(), helpEntry, nullptr);

  Arguments arguments(g_new0(char*, static_cast<gsize>(argc) + 1));
  for (int i = 0; i < argc; ++i) arguments.get()[i] = g_strdup(argv[i]);
  char** remaining = arguments.release();
  GError* raised = nullptr;
  const bool parsed = g_option_context_parse_strv(context.get(), &remaining, &raised);
  arguments.reset(remaining);
  const GErrorPtr error(raised);
  const GTextPtr platformName(platformArgument);
  const GTextPtr profile(profileArgument);
  const GTextPtr directory(directoryArgument);

  const GTextPtr ui(uiArgument);
  const GTextPtr uiBundle(bundleArgument);
  const Arguments uiArguments(programArguments);

  if (!parsed) return usageError(error->message);
  if (help) {
    const GTextPtr text(g_option_context_get_help(context.get(), TRUE, nullptr));
    std::fputs(text.get(), stdout);
    return ended(0);
  }
  if (version) {
    std::printf("Norvane %s\n", kBuild);
    return ended(0);
  }
  CommandLine commandLine;
  if (platformName && std::string_view("gtk") != platformName.get()) {
    commandLine.headless = std::string_view("headless") == platformName.get();
    if (!commandLine.headless) {
      return usageError(std::string("no platform is named ") + platformName.get());
    }
  }
  for (char** argument = arguments.get() + 1; argc > 0 && *argument; ++argument) {
    if (commandLine.headless || !isLink(*argument)) {
      return usageError(std::string("unexpected argument ") + *argument);
    }
    // The UI's texts are UTF-8, and so are the session bus's.
    if (!isWellFormedUtf8(*argument)) return refused(kExitBadData, "a link must be UTF-8");
    commandLine.links.emplace_back(*argument);
  }
  if (ui) {
    commandLine.ui = uiNamed(ui.get());
    if (!commandLine.ui) return usageError(std::string("no UI is named ") + ui.get());
  } else if (uiBundle) {
    commandLine.ui = UiChoice::bundle;
  } else if (console) {
    commandLine.ui = UiChoice::explorer;
  }
  const bool isUiGiven =
      uiBundle || console || uiArguments || (ui && commandLine.ui != UiChoice::console);
  if (commandLine.headless && (isUiGiven || atLogin)) {
    return usageError(
        "the headless desktop has the console alone: --ui, --ui-bundle, --ui-argument, "
        "--console and --at-login are for the real one");
  }
  if (uiArguments && commandLine.ui && commandLine.ui != UiChoice::bundle) {
    return usageError("--ui-argument is for a UI program, which is not played here");
  }
  if (uiBundle && commandLine.ui != UiChoice::bundle) {
    return usageError(std::string("--ui-bundle is not played with --ui ") + ui.get());
  }
  if (console && commandLine.ui == UiChoice::bundle) {
    return usageError("--console speaks beside the explorer, not beside a UI program");
  }
  if (profile && !commandLine.headless) {
    return usageError("--desktop describes the headless desktop: add --platform headless");
  }
  if (quit && commandLine.headless) return usageError("--quit ends a host on the real desktop");
  if (quit && !commandLine.links.empty()) return usageError("--quit leaves nobody to open a link");
  if (directory && !*directory) return usageError("--data-dir needs a directory");
  // Paths below it are told to the UI, whose texts are UTF-8.
  if (directory && !isWellFormedUtf8(directory.get())) {
    return usageError("--data-dir must be UTF-8");
  }
  commandLine.dataDirectory = directory ? directory.get() : DataDirectory::defaultPath();
  if (profile) commandLine.desktopProfile = profile.get();
  if (uiBundle) commandLine.uiBundle = uiBundle.get();
  for (char** text = uiArguments.get(); text && *text; ++text) {
    commandLine.uiArguments.emplace_back(*text);
  }
  commandLine.allowDebugger = allowDebugger;
  commandLine.atLogin = atLogin;
  commandLine.console = console;
  commandLine.quit = quit;
  return commandLine;
}

}  // namespace norvane
