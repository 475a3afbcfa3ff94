#include "icloud/icloud_bridge.h"

#include <system_error>

#include "platform/log.h"
#include "platform/ns_file_manager.h"
#include "platform/platform.h"

namespace norvane {

void IcloudBridge::registerOn(FlutterMethodChannel channel) {
  channel.setMethodCallHandler([](const FlutterMethodCall& call, FlutterResult result) {
    if (call.method() != "containerURL") {
      result(FlutterMethodNotImplemented);
    } else if (const auto path = resolveContainerPath()) {
      result(*path);
    } else {
      result(nullptr);
    }
  });
}

std::optional<std::string> IcloudBridge::resolveContainerPath() {
  NSFileManager& files = platform().fileManager;
  const auto container = files.URLForUbiquityContainerIdentifier("iCloud.cn.kestrio.norvane");
  if (!container) return std::nullopt;
  const std::string path = *container + "/Documents/sync";
  try {
    files.createDirectory(path);
  } catch (const std::system_error& error) {
    NSLog(std::string("[Norvane] iCloud createDirectory failed: ") + error.what());
    return std::nullopt;
  }
  return path;
}

}  // namespace norvane
