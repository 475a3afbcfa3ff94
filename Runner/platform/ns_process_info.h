#pragma once

#include <compare>
#include <optional>
#include <string>

namespace norvane {

struct NSOperatingSystemVersion {
  int majorVersion = 0;
  int minorVersion = 0;
  int patchVersion = 0;
  auto operator<=>(const NSOperatingSystemVersion&) const = default;
};

/// The process and the system that it runs on. Main thread.
class NSProcessInfo {
 public:
  virtual ~NSProcessInfo() = default;

  /// The value of an environment variable, in the system's encoding; empty text when it is set to
  /// nothing.
  virtual std::optional<std::string> environment(const std::string& name) const = 0;

  /// The version of the home system whose features this desktop offers. A simulated one may
  /// change it: ask at each use.
  virtual NSOperatingSystemVersion operatingSystemVersion() const = 0;

  bool isOperatingSystemAtLeastVersion(NSOperatingSystemVersion version) const {
    return operatingSystemVersion() >= version;
  }
};

}  // namespace norvane
