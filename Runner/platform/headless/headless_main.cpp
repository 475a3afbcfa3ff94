#include "platform/headless/headless_main.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "platform/console/console.h"
#include "platform/headless/console_events.h"
#include "platform/headless/headless_platform.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/data_directory.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/process.h"
#include "platform/linux/stderr_log.h"

namespace norvane {
namespace {

int refuse(int status, const std::string& message) {
  std::fprintf(stderr, "Norvane: %s\n", message.c_str());
  return status;
}

Profile readProfile(const std::string& path) {
  Profile profile;
  applyToProfile(parseJson(textOf(readFile(path))), profile);
  return profile;
}

}  // namespace

int runHeadless(const CommandLine& commandLine, const MainInterface& mainInterface) {
  ensureStandardDescriptors();
  disableCoreDumps();
  surviveFailedWrites();
  ::umask(S_IRWXG | S_IRWXO);  // whatever is kept is the user's alone
  Profile profile;
  try {
    if (commandLine.desktopProfile) profile = readProfile(*commandLine.desktopProfile);
  } catch (const std::exception& error) {
    return refuse(kExitBadData, std::string("the profile is not valid: ") + error.what());
  }
  StderrLog log;
  GlibDispatch dispatch;
  std::optional<DataDirectory> directory;
  std::optional<HeadlessPlatform> host;
  try {
    directory.emplace(commandLine.dataDirectory);
    host.emplace(std::move(profile), directory->path(), dispatch, log, [&] { dispatch.quit(); });
  } catch (const DataDirectoryInUse& inUse) {
    return refuse(kExitInUse, std::string("another host uses the data directory ") + inUse.what());
  } catch (const std::exception& error) {
    return refuse(kExitNoDataDirectory,
                  std::string("the data directory cannot be used: ") + error.what());
  }
  Console console(host->ui, dispatch,
                  [&](const std::string& event, JsonDocument& arguments, JsonWriter& answer) {
                    carryOutDesktopEvent(event, arguments, answer, *host);
                  });
  host->updater.setObserver([&] { console.printDesktopEvent("checkForUpdates"); });
  host->desktop.launch(mainInterface);
  console.start();
  dispatch.run();
  return 0;
}

}  // namespace norvane
