#include "autofill/auto_fill_bridge.h"

#include <utility>

namespace norvane {

AutoFillBridge::AutoFillBridge(const std::shared_ptr<FlutterBinaryMessenger>& messenger)
    : channel("cn.kestrio.norvane.autofill", messenger) {}

std::shared_ptr<AutoFillBridge> AutoFillBridge::make(
    const std::shared_ptr<FlutterBinaryMessenger>& messenger) {
  std::shared_ptr<AutoFillBridge> bridge(new AutoFillBridge(messenger));
  bridge->channel.setMethodCallHandler(
      [weakBridge = std::weak_ptr(bridge)](const FlutterMethodCall& call, FlutterResult result) {
        if (const auto alive = weakBridge.lock()) {
          alive->handle(call, std::move(result));
        } else {
          result.drop();
        }
      });
  return bridge;
}

void AutoFillBridge::handle(const FlutterMethodCall& /*call*/, FlutterResult result) {
  result(FlutterMethodNotImplemented);
}

}  // namespace norvane
