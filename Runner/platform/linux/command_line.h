#pragma once

#include <optional>
#include <string>
#include <vector>

namespace norvane {

// Exit statuses, after sysexits.h.
inline constexpr int kExitUsage = 64;            ///< a wrong command line
inline constexpr int kExitBadData = 65;          ///< a profile or a link that is not valid
inline constexpr int kExitNoDesktop = 69;        ///< no display, or no norvane-desktop beside
inline constexpr int kExitNoDataDirectory = 73;  ///< a data directory that cannot be used
inline constexpr int kExitInUse = 75;            ///< another host has the data directory

/// What plays the UI on the real desktop; headless it is always the console.
enum class UiChoice { bundle, explorer, console };

struct CommandLine {
  bool headless = false;  ///< the simulated desktop; otherwise the real one
  std::string dataDirectory;
  std::optional<std::string> desktopProfile;  ///< path of a profile, for the headless desktop
  // For the real desktop
  std::optional<UiChoice> ui;            ///< none: the bundle's where there is one, else explorer
  std::optional<std::string> uiBundle;   ///< where the UI lies, instead of in the bundle
  bool console = false;                  ///< speaks beside the explorer
  std::vector<std::string> uiArguments;  ///< for the UI program, behind the host's own
  bool allowDebugger = false;            ///< lets processes of the same user look into this one
  bool atLogin = false;                  ///< started with the session, not by the person
  bool quit = false;                     ///< only ends the instance that runs
  std::vector<std::string> links;

  /// Set when there is nothing to run: after --help, --version, a usage error or a link that is not
  /// UTF-8, which were answered.
  std::optional<int> exitStatus;
};

CommandLine parseCommandLine(int argc, char** argv);

}  // namespace norvane
