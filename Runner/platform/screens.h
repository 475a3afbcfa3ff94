#pragma once

#include <optional>

#include "platform/geometry.h"

namespace norvane {

/// The screens of the desktop. Main thread.
class Screens {
 public:
  virtual ~Screens() = default;

  /// What is visible of the main screen, the one on which the person works, beside menu bar and
  /// dock; in points, as it is at the call. Nothing when no screen is attached.
  virtual std::optional<NSRect> mainScreenVisibleFrame() const = 0;
};

}  // namespace norvane
