#pragma once

#include <optional>
#include <string>

#include "platform/ns_file_manager.h"

namespace norvane {

/// Files and directories, with the application's containers in its data directory.
class LinuxFileManager : public NSFileManager {
 public:
  /// Removes what writes that a kill has cut off have left behind.
  explicit LinuxFileManager(std::string dataDirectory);

  bool fileExistsAtPath(const std::string& path) const override;
  /// Directories that it makes have mode 0700.
  void createDirectory(const std::string& path) override;
  void writeAtomically(std::span<const std::uint8_t> data, const std::string& path) override;
  void removeItem(const std::string& path) override;
  std::optional<std::string> containerURLForSecurityApplicationGroupIdentifier(
      const std::string& group) override;
  /// Nothing: Linux has no such storage.
  std::optional<std::string> URLForUbiquityContainerIdentifier(
      const std::string& identifier) override;

 protected:
  const std::string dataDirectory_;
};

}  // namespace norvane
