#include "platform/linux/host_process.h"

#include <cstdio>
#include <exception>

#include <sys/stat.h>

#include "platform/linux/command_line.h"
#include "platform/linux/process.h"

namespace norvane {

void prepareProcess() {
  ensureStandardDescriptors();
  disableCoreDumps();
  surviveFailedWrites();
  ::umask(S_IRWXG | S_IRWXO);
}

int refuse(int status, const std::string& message) {
  std::fprintf(stderr, "Norvane: %s\n", message.c_str());
  return status;
}

std::optional<int> openHost(const std::string& path, std::optional<DataDirectory>& directory,
                            const std::function<void(const std::string& path)>& makeHost) {
  try {
    directory.emplace(path);
    makeHost(directory->path());
    return std::nullopt;
  } catch (const DataDirectoryInUse& inUse) {
    return refuse(kExitInUse, std::string("another host uses the data directory ") + inUse.what());
  } catch (const std::exception& error) {
    return refuse(kExitNoDataDirectory,
                  std::string("the data directory cannot be used: ") + error.what());
  }
}

}  // namespace norvane
