#pragma once

#include "platform/linux/linux_bundle.h"

namespace norvane {

/// The bundle with the Info dictionary that whoever packages it may write: the object in
/// BUNDLE/Contents/Info.json.
class DesktopBundle : public LinuxBundle {
 public:
  /// A dictionary that cannot be understood is one log record, and has nothing.
  std::optional<std::string> infoText(const std::string& key) const override;
};

}  // namespace norvane
