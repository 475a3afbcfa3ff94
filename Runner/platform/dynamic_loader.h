#pragma once

#include <optional>
#include <string>

namespace norvane {

/// The system's loader of dynamic libraries. Main thread.
class DynamicLoader {
 public:
  virtual ~DynamicLoader() = default;

  /// Loads the library at `path` for the rest of the process's life: every symbol bound at once
  /// (`RTLD_NOW`), its own symbols found by every later lookup (`RTLD_GLOBAL`). A path without a
  /// slash is one in the working directory, never a name to search for. False on failure, as with
  /// anything but a regular file; true again for one that is loaded.
  virtual bool dlopen(const std::string& path) = 0;

  /// The loader's words for the last failure, once, in the system's encoding; nothing when it has
  /// none.
  virtual std::optional<std::string> dlerror() = 0;
};

}  // namespace norvane
