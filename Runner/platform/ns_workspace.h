#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/graphics.h"

namespace norvane {

/// An application that runs; in UTF-8; what the system does not know of it is
/// absent.
struct NSRunningApplication {
  std::optional<std::string> bundleIdentifier;
  std::optional<std::string> localizedName;
  std::shared_ptr<NSImage> icon;
};

/// The applications of the session. Main thread.
class NSWorkspace {
 public:
  virtual ~NSWorkspace() = default;

  virtual std::vector<NSRunningApplication> runningApplications() const = 0;
  /// The one in front, this one included; nothing when none is.
  virtual std::optional<NSRunningApplication> frontmostApplication() const = 0;
};

}  // namespace norvane
