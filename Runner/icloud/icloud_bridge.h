#pragma once

#include <optional>
#include <string>

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// Finds, and makes, the directory in the user's iCloud Drive that the UI keeps its sync files in.
/// Main thread.
struct IcloudBridge {
  /// Serves "cn.kestrio.norvane.icloud" on `channel`.
  static void registerOn(FlutterMethodChannel channel);
  /// The directory's path; nothing when there is no container or the directory cannot be made.
  static std::optional<std::string> resolveContainerPath();
};

}  // namespace norvane
