#pragma once

#include <memory>

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// The host's side of the AutoFill channel. Owned by the main window. Main thread.
class AutoFillBridge : public std::enable_shared_from_this<AutoFillBridge> {
 public:
  /// Opens the channel on the main engine's messenger and serves it for as long as the bridge
  /// lives.
  static std::shared_ptr<AutoFillBridge> make(
      const std::shared_ptr<FlutterBinaryMessenger>& messenger);

 private:
  explicit AutoFillBridge(const std::shared_ptr<FlutterBinaryMessenger>& messenger);

  void handle(const FlutterMethodCall& call, FlutterResult result);

  FlutterMethodChannel channel;
};

}  // namespace norvane
