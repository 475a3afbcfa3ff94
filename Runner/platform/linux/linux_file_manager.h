#pragma once

#include "platform/ns_file_manager.h"

namespace norvane {

/// Files and directories; a desktop adds where its containers lie.
class LinuxFileManager : public NSFileManager {
 public:
  bool fileExistsAtPath(const std::string& path) const override;
  /// Directories that it makes have mode 0700.
  void createDirectory(const std::string& path) override;
  void writeAtomically(std::span<const std::uint8_t> data, const std::string& path) override;
  void removeItem(const std::string& path) override;
};

}  // namespace norvane
