#pragma once

#include <string>

namespace norvane {

class NSFileManager {
 public:
  virtual ~NSFileManager() = default;

  /// Whether anything exists at `path`, symbolic links followed. The empty path names nothing.
  virtual bool fileExistsAtPath(const std::string& path) const = 0;
};

}  // namespace norvane
