#include "platform/linux/linux_bundle.h"

#include <filesystem>

namespace norvane {

std::string LinuxBundle::bundlePath() const {
  const auto executable = std::filesystem::read_symlink("/proc/self/exe");
  return executable.parent_path().parent_path().parent_path().string();
}

}  // namespace norvane
