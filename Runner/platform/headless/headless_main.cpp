#include "platform/headless/headless_main.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/headless/console.h"
#include "platform/headless/headless_desktop.h"
#include "platform/headless/headless_ui.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/data_directory.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/process.h"
#include "platform/linux/stderr_log.h"
#include "platform/platform.h"

namespace norvane {
namespace {

int refuse(int status, const std::string& message) {
  std::fprintf(stderr, "Norvane: %s\n", message.c_str());
  return status;
}

Profile readProfile(const std::string& path) {
  Profile profile;
  applyToProfile(parseJson(readFile(path)), profile);
  return profile;
}

int run(const MainInterface& mainInterface, Profile profile, StderrLog& log,
        JsonUserDefaults& userDefaults) {
  LinuxBundle bundle;
  LinuxFileManager fileManager;
  LinuxDynamicLoader loader;
  GlibDispatch dispatch;
  HeadlessDesktop desktop(std::move(profile), dispatch, [&] { dispatch.quit(); });
  HeadlessUi ui;
  Console console(desktop, ui, dispatch, userDefaults);
  NSApplication application;
  const Platform platform{
      .application = application,
      .dispatch = dispatch,
      .dynamicLoader = loader,
      .fileManager = fileManager,
      .flutter = ui,
      .log = log,
      .mainBundle = bundle,
      .processInfo = desktop,
      .screens = desktop,
      .userDefaults = userDefaults,
      .windowServer = desktop,
  };
  const ScopedPlatform installed(platform);

  desktop.launch(mainInterface);
  console.start();
  dispatch.run();
  application.releaseAll();
  return 0;
}

}  // namespace

int runHeadless(const CommandLine& commandLine, const MainInterface& mainInterface) {
  ensureStandardDescriptors();
  disableCoreDumps();
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is an error of the write
  Profile profile;
  try {
    if (commandLine.desktopProfile) profile = readProfile(*commandLine.desktopProfile);
  } catch (const std::exception& error) {
    return refuse(kExitBadProfile, std::string("the profile is not valid: ") + error.what());
  }
  StderrLog log;
  std::optional<DataDirectory> directory;
  std::optional<JsonUserDefaults> userDefaults;
  try {
    directory.emplace(commandLine.dataDirectory);
    userDefaults.emplace(directory->path() + "/user-defaults.json", log);
  } catch (const DataDirectoryInUse& inUse) {
    return refuse(kExitInUse, std::string("another host uses the data directory ") + inUse.what());
  } catch (const std::exception& error) {
    return refuse(kExitNoDataDirectory,
                  std::string("the data directory cannot be used: ") + error.what());
  }
  return run(mainInterface, std::move(profile), log, *userDefaults);
}

}  // namespace norvane
