#include "platform/linux/data_directory.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/process.h"

namespace norvane {

DataDirectory::DataDirectory(const std::string& path)
    : path_(std::filesystem::absolute(path).lexically_normal().string()) {
  if (path_.size() > 1 && path_.ends_with('/')) path_.pop_back();
  const auto parent = std::filesystem::path(path_).parent_path();
  std::filesystem::create_directories(parent);
  if (::mkdir(path_.c_str(), 0700) != 0 && errno != EEXIST) {
    throw std::system_error(errno, std::generic_category(), path_);
  }
  const std::string lockPath = path_ + "/.lock";
  lock_ = FileDescriptor(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!lock_) throw std::system_error(errno, std::generic_category(), path_);
  if (::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) throw DataDirectoryInUse(path_);
    throw std::system_error(errno, std::generic_category(), path_);
  }
}

std::string DataDirectory::defaultPath() {
  // A relative value is to be ignored, says the XDG base directory standard.
  const auto dataHome = environmentVariable("XDG_DATA_HOME");
  if (dataHome && dataHome->starts_with('/')) return *dataHome + "/norvane";
  const auto home = environmentVariable("HOME");
  if (home && !home->empty()) return *home + "/.local/share/norvane";
  const passwd* user = ::getpwuid(::getuid());
  return std::string(user ? user->pw_dir : "") + "/.local/share/norvane";
}

}  // namespace norvane
