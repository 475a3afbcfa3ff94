#pragma once

#include <optional>
#include <string>

namespace norvane {

/// The application's bundle on disk. Main thread.
class NSBundle {
 public:
  virtual ~NSBundle() = default;

  /// Absolute, without a trailing separator; wherever the bundle was moved to. In the system's
  /// encoding.
  virtual std::string bundlePath() const = 0;

  /// The same for as long as the process lives; nothing for a bundle without one.
  virtual std::optional<std::string> bundleIdentifier() const = 0;

  /// A text of the application's Info dictionary as it is now, in UTF-8; nothing when `key` is
  /// absent or holds no text. A dictionary that cannot be understood has none, which is logged.
  virtual std::optional<std::string> infoText(const std::string& key) const = 0;
};

}  // namespace norvane
