#include "platform/headless/headless_main.h"

#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "platform/console/console.h"
#include "platform/headless/console_events.h"
#include "platform/headless/headless_platform.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/command_line.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/host_process.h"
#include "platform/linux/stderr_log.h"

namespace norvane {
namespace {

Profile readProfile(const std::string& path) {
  Profile profile;
  applyToProfile(parseJson(textOf(readFile(path))), profile);
  return profile;
}

}  // namespace

int runHeadless(const CommandLine& commandLine, const MainInterface& mainInterface) {
  prepareProcess();
  StderrLog log;
  const ScopedLog installed(log);
  Profile profile;
  try {
    if (commandLine.desktopProfile) profile = readProfile(*commandLine.desktopProfile);
  } catch (const std::exception& error) {
    return refuse(kExitBadData, std::string("the profile is not valid: ") + error.what());
  }
  GlibDispatch dispatch;
  std::optional<DataDirectory> directory;
  std::optional<HeadlessPlatform> host;
  const auto refused = openHost(commandLine.dataDirectory, directory, [&](const std::string& path) {
    host.emplace(std::move(profile), path, dispatch, [&] { dispatch.quit(); });
  });
  if (refused) return *refused;
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
