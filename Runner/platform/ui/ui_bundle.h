#pragma once

#include <string>
#include <vector>

namespace norvane {

/// A UI as the toolkit's tool builds it for Linux: run-time library, program, plugins and assets
/// below one directory.
class UiBundle {
 public:
  explicit UiBundle(std::string directory) : directory_(std::move(directory)) {}

  const std::string& directory() const { return directory_; }
  std::string library() const { return directory_ + "/lib/libflutter_linux_gtk.so"; }
  std::string program() const { return directory_ + "/lib/libapp.so"; }
  std::string localeData() const { return directory_ + "/data/icudtl.dat"; }
  std::string assets() const { return directory_ + "/data/flutter_assets"; }

  /// Whether there is anything at all.
  bool exists() const;
  /// The paths of what a bundle has to have and this one lacks.
  std::vector<std::string> missing() const;
  /// The libraries of its native plugins, in the order of their names.
  std::vector<std::string> pluginLibraries() const;

 private:
  std::string directory_;
};

}  // namespace norvane
