#pragma once

#include <string>
#include <vector>

#include "platform/linux/linux_bundle.h"

namespace norvane {

/// The bundle with the Info dictionary that whoever packages it may write: the object in
/// BUNDLE/Contents/Info.json.
class DesktopBundle : public LinuxBundle {
 public:
  /// A dictionary that cannot be understood is one log record, and has nothing.
  std::optional<std::string> infoText(const std::string& key) const override;
  /// The texts in the list `key`; none, with one log record, when it is anything else.
  std::vector<std::string> infoTexts(const std::string& key) const;

 private:
  std::string infoPath() const;
};

}  // namespace norvane
