#pragma once

#include <optional>
#include <string>

namespace norvane {

// Exit statuses, after sysexits.h.
inline constexpr int kExitUsage = 64;            ///< a wrong command line
inline constexpr int kExitBadProfile = 65;       ///< a profile that is not valid
inline constexpr int kExitNoDataDirectory = 73;  ///< a data directory that cannot be used
inline constexpr int kExitInUse = 75;            ///< another host has the data directory

struct CommandLine {
  std::string dataDirectory;
  std::optional<std::string> desktopProfile;  ///< path of a profile

  /// Set when there is nothing to run: after --help, --version or a usage error, which were
  /// answered.
  std::optional<int> exitStatus;
};

CommandLine parseCommandLine(int argc, char** argv);

}  // namespace norvane
