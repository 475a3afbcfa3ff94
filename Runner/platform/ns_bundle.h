#pragma once

#include <optional>
#include <string>

namespace norvane {

/// The application's bundle on disk.
class NSBundle {
 public:
  virtual ~NSBundle() = default;

  /// Absolute, without a trailing separator; wherever the bundle was moved to.
  virtual std::string bundlePath() const = 0;

  virtual std::optional<std::string> bundleIdentifier() const = 0;

  /// A text of the application's Info dictionary; nothing when `key` is absent or holds no text.
  virtual std::optional<std::string> infoText(const std::string& key) const = 0;
};

}  // namespace norvane
