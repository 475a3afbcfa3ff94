#include "platform/linux/command_line.h"

#include <cstdio>
#include <memory>

#include <glib.h>

#include "platform/linux/data_directory.h"
#include "platform/utf8.h"

namespace norvane {
namespace {

template <auto Free>
struct Deleter {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};
using Text = std::unique_ptr<char, Deleter<g_free>>;
using Context = std::unique_ptr<GOptionContext, Deleter<g_option_context_free>>;
using Arguments = std::unique_ptr<char*, Deleter<g_strfreev>>;
using Error = std::unique_ptr<GError, Deleter<g_error_free>>;

CommandLine usageError(const std::string& message) {
  std::fprintf(stderr, "Norvane: %s (try --help)\n", message.c_str());
  return {.dataDirectory = {}, .desktopProfile = {}, .exitStatus = kExitUsage};
}

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
  char* platformArgument = nullptr;
  char* profileArgument = nullptr;
  char* directoryArgument = nullptr;
  gboolean version = FALSE;
  const GOptionEntry entries[] = {
      {"platform", 0, 0, G_OPTION_ARG_STRING, &platformArgument,
       "The desktop to run on; headless, the default, is the only one so far", "NAME"},
      {"desktop", 0, 0, G_OPTION_ARG_FILENAME, &profileArgument, "Describes the headless desktop",
       "PROFILE.json"},
      {"data-dir", 0, 0, G_OPTION_ARG_FILENAME, &directoryArgument,
       "Where everything is kept; by default in the XDG data home", "DIR"},
      {"version", 0, 0, G_OPTION_ARG_NONE, &version, "Print the version", nullptr},
      {},
  };
  const Context context(g_option_context_new("- the desktop host of a password manager"));
  g_option_context_set_summary(
      context.get(),
      "On the headless desktop, standard input and output speak the console protocol:\n"
      "one JSON object a line, see docs/console.md.");
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
  const Error error(raised);
  const Text platformName(platformArgument);
  const Text profile(profileArgument);
  const Text directory(directoryArgument);

  if (!parsed) return usageError(error->message);
  if (help) {
    const Text text(g_option_context_get_help(context.get(), TRUE, nullptr));
    std::fputs(text.get(), stdout);
    return {.dataDirectory = {}, .desktopProfile = {}, .exitStatus = 0};
  }
  if (version) {
    std::puts("Norvane " NORVANE_VERSION);
    return {.dataDirectory = {}, .desktopProfile = {}, .exitStatus = 0};
  }
  if (arguments.get()[0] && arguments.get()[1]) {
    return usageError(std::string("unexpected argument ") + arguments.get()[1]);
  }
  if (platformName && std::string(platformName.get()) != "headless") {
    return usageError(std::string("no platform is named ") + platformName.get());
  }
  if (directory && !*directory) return usageError("--data-dir needs a directory");
  // Paths below it are told to the UI, whose texts are UTF-8.
  if (directory && !isWellFormedUtf8(directory.get())) {
    return usageError("--data-dir must be UTF-8");
  }
  return {
      .dataDirectory = directory ? directory.get() : DataDirectory::defaultPath(),
      .desktopProfile = profile ? std::optional<std::string>(profile.get()) : std::nullopt,
      .exitStatus = {},
  };
}

}  // namespace norvane
