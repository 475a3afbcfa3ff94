#pragma once

#include "platform/linux/linux_bundle.h"
#include "platform/log.h"

namespace norvane {

/// The bundle with the Info dictionary that whoever packages it may write: the object in
/// BUNDLE/Contents/Info.json.
class DesktopBundle : public LinuxBundle {
 public:
  /// `log` gets a record of a dictionary that cannot be understood. The bundle is read before there
  /// is a platform to log with.
  explicit DesktopBundle(Log& log) : log_(log) {}
  std::optional<std::string> infoText(const std::string& key) const override;

 private:
  Log& log_;
};

}  // namespace norvane
