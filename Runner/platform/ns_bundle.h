#pragma once

#include <string>

namespace norvane {

/// The application's bundle on disk.
class NSBundle {
 public:
  virtual ~NSBundle() = default;

  /// Absolute, without a trailing separator; wherever the bundle was moved to.
  virtual std::string bundlePath() const = 0;
};

}  // namespace norvane
