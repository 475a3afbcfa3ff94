#include "window/core_library_loader.h"

#include <string_view>

#include "platform/dynamic_loader.h"
#include "platform/log.h"
#include "platform/ns_bundle.h"
#include "platform/ns_file_manager.h"
#include "platform/ns_process_info.h"
#include "platform/platform.h"

namespace norvane {
namespace {

// How far above the bundle a source tree's root is.
constexpr int kLevelsToDevelopmentRoot = 8;

std::string deletingLastPathComponent(const std::string& path) {
  const auto separator = path.find_last_of('/');
  if (separator == std::string::npos) return "";
  return separator == 0 ? "/" : path.substr(0, separator);
}

std::string appendingPathComponent(const std::string& path, const std::string& component) {
  return path.empty() || path.ends_with('/') ? path + component : path + '/' + component;
}

/// The paths as a list in square brackets, each in quotation marks.
std::string listOf(const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) {
    list += list.empty() ? "\"" : ", \"";
    list += path + '"';
  }
  return '[' + list + ']';
}

}  // namespace

std::vector<std::string> candidatePaths() {
  std::vector<std::string> paths;
  if (const auto own = platform().processInfo.environment("NORVANE_RUST_LIB_PATH")) {
    paths.push_back(*own);
  }
  const std::string bundlePath = platform().mainBundle.bundlePath();
  paths.push_back(bundlePath + "/Contents/Frameworks/libffi_bridge.dylib");

  std::string root = bundlePath;
  for (int level = 0; level < kLevelsToDevelopmentRoot; ++level) {
    root = deletingLastPathComponent(root);
  }
  paths.push_back(appendingPathComponent(root, "target/debug/libffi_bridge.dylib"));
  paths.push_back(appendingPathComponent(root, "target/release/libffi_bridge.dylib"));
  return paths;
}

void loadRustLibrary() {
  const auto candidates = candidatePaths();
  DynamicLoader& loader = platform().dynamicLoader;
  for (const std::string& path : candidates) {
    if (!platform().fileManager.fileExistsAtPath(path)) continue;
    if (loader.dlopen(path)) {
      NSLog("[Norvane] loaded Rust library at: " + path);
      return;
    }
    if (const auto error = loader.dlerror()) {
      NSLog("[Norvane] dlopen failed for " + path + ": " + *error);
    }
  }
  fatalError("[Norvane] could not load libffi_bridge.dylib; tried: " + listOf(candidates),
             "MainFlutterWindow");
}

}  // namespace norvane
