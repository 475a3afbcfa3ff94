#pragma once

#include <string>

#include "platform/ns_bundle.h"

namespace norvane {

/// The bundle that the running executable lies in: BUNDLE/Contents/MacOS/EXECUTABLE. Where its Info
/// dictionary comes from is each desktop's own matter.
class LinuxBundle : public NSBundle {
 public:
  std::string bundlePath() const override;
  std::optional<std::string> bundleIdentifier() const override { return "cn.kestrio.norvane"; }
};

}  // namespace norvane
