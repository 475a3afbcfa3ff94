#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/graphics.h"

namespace norvane {

/// An application that runs. Its texts are UTF-8; what the system does not know of it is absent.
struct NSRunningApplication {
  std::optional<std::string> bundleIdentifier;
  std::optional<std::string> localizedName;
  std::shared_ptr<NSImage> icon;
};

/// The applications of the session. Main thread.
class NSWorkspace {
 public:
  virtual ~NSWorkspace() = default;

  /// Each application that has windows, or that the host asks for by its identifier, once, this one
  /// included; in no order that means anything. As it is at the call.
  virtual std::vector<NSRunningApplication> runningApplications() const = 0;
  /// The one in front, this one included; nothing when none is. A panel of this one's does not
  /// count: what lies below it is in front.
  virtual std::optional<NSRunningApplication> frontmostApplication() const = 0;
};

}  // namespace norvane
