#include "platform/ui/ui_bundle.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace norvane {
namespace {

bool isThere(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

}  // namespace

bool UiBundle::exists() const { return isThere(directory_); }

std::vector<std::string> UiBundle::missing() const {
  std::vector<std::string> paths{library(), program(), localeData(), assets()};
  std::erase_if(paths, isThere);
  return paths;
}

std::vector<std::string> UiBundle::pluginLibraries() const {
  std::vector<std::string> paths;
  std::error_code ignored;
  for (std::filesystem::directory_iterator at(directory_ + "/lib", ignored), end;
       !ignored && at != end; at.increment(ignored)) {
    const std::string name = at->path().filename().string();
    if (name.starts_with("lib") && name.ends_with("_plugin.so")) paths.push_back(at->path());
  }
  std::ranges::sort(paths);
  return paths;
}

}  // namespace norvane
