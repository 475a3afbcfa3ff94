#include "platform/linux/linux_file_manager.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/atomic_file.h"

namespace norvane {
namespace {

constexpr const char* kGroupContainers = "/Group Containers/";

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

}  // namespace

LinuxFileManager::LinuxFileManager(std::string dataDirectory)
    : dataDirectory_(std::move(dataDirectory)) {
  sweepTemporaryFiles(dataDirectory_);
  std::error_code ignored;  // what cannot be listed stays
  std::filesystem::recursive_directory_iterator entry(
      dataDirectory_ + kGroupContainers, std::filesystem::directory_options::skip_permission_denied,
      ignored);
  for (; entry != std::filesystem::recursive_directory_iterator(); entry.increment(ignored)) {
    if (entry->is_directory(ignored)) sweepTemporaryFiles(entry->path().string());
  }
}

bool LinuxFileManager::fileExistsAtPath(const std::string& path) const {
  return ::access(path.c_str(), F_OK) == 0;
}

void LinuxFileManager::createDirectory(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  if (::mkdir(path.c_str(), 0700) == 0) return;
  if (errno == ENOENT && !parent.empty() && parent != path) {
    createDirectory(parent);
    if (::mkdir(path.c_str(), 0700) == 0) return;
  }
  if (errno != EEXIST) fail(path);
  if (!std::filesystem::is_directory(path)) {
    errno = ENOTDIR;
    fail(path);
  }
}

void LinuxFileManager::writeAtomically(std::span<const std::uint8_t> data,
                                       const std::string& path) {
  writeFileAtomically(path, std::as_bytes(data));
}

void LinuxFileManager::removeItem(const std::string& path) {
  if (removeForGood(path)) return;
  errno = ENOENT;
  fail(path);
}

std::optional<std::string> LinuxFileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string& group) {
  return dataDirectory_ + kGroupContainers + group;
}

std::optional<std::string> LinuxFileManager::URLForUbiquityContainerIdentifier(
    const std::string& /*identifier*/) {
  return std::nullopt;
}

}  // namespace norvane
