#pragma once

#include <string>

#include "platform/ns_bundle.h"

namespace norvane {

/// The bundle that the running executable lies in: BUNDLE/Contents/MacOS/EXECUTABLE. Its Info
/// dictionary is the object in BUNDLE/Contents/Info.json, which whoever packages it may write.
class LinuxBundle : public NSBundle {
 public:
  std::string bundlePath() const override;
  std::optional<std::string> bundleIdentifier() const override { return "cn.kestrio.norvane"; }
  std::optional<std::string> infoText(const std::string& key) const override;
};

}  // namespace norvane
