#pragma once

#include <stdexcept>
#include <string>

#include "platform/linux/file_descriptor.h"

namespace norvane {

/// Another process has the data directory.
class DataDirectoryInUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The directory under which the host keeps everything, for this process alone while the object
/// lives.
class DataDirectory {
 public:
  /// Makes the directory with mode 0700 where it is missing. Throws DataDirectoryInUse, or
  /// std::system_error when the directory cannot be made or written to.
  explicit DataDirectory(const std::string& path);

  /// The host's own directory in the user's XDG data home.
  static std::string defaultPath();

  /// Absolute.
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  FileDescriptor lock_;
};

}  // namespace norvane
