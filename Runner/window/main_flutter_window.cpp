#include "window/main_flutter_window.h"

#include <utility>

#include "autofill/auto_fill_bridge.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/log.h"
#include "platform/ns_application.h"
#include "platform/ns_process_info.h"
#include "platform/platform.h"
#include "services/hotkey_config_channel.h"
#include "window/core_library_loader.h"
#include "window/plugin_registrant.h"

namespace norvane {
namespace {

constexpr NSSize kMinSize{940, 600};

}  // namespace

std::shared_ptr<MainFlutterWindow> MainFlutterWindow::first() {
  for (const auto& window : platform().application.windows()) {
    if (auto mainWindow = std::dynamic_pointer_cast<MainFlutterWindow>(window)) return mainWindow;
  }
  return nullptr;
}

void MainFlutterWindow::awakeFromNib() {
  loadRustLibrary();
  const auto controller = std::make_shared<FlutterViewController>();
  setContentViewController(controller);
  setReleasedWhenClosed(false);
  setMinSize(kMinSize);
  const auto& messenger = controller->engine().binaryMessenger();
  openChannels(messenger);
  if (platform().processInfo.isOperatingSystemAtLeastVersion({11, 0, 0})) {
    autoFillBridge = AutoFillBridge::make(messenger);
  }
  RegisterGeneratedPlugins(*controller);
  NSWindow::awakeFromNib();
  applyFirstLaunchFrame();
}

void MainFlutterWindow::openChannels(const std::shared_ptr<FlutterBinaryMessenger>& messenger) {
  deeplinkChannel.emplace("norvane/deeplink", messenger);
  deeplinkChannel->setMethodCallHandler(
      [weakSelf = std::weak_ptr(std::static_pointer_cast<MainFlutterWindow>(shared_from_this()))](
          const FlutterMethodCall& call, FlutterResult result) {
        const auto self = weakSelf.lock();
        if (!self) {
          result(nullptr);
        } else if (call.method() == "flutterReady") {
          self->becomeReady();
          result(nullptr);
        } else {
          result(FlutterMethodNotImplemented);
        }
      });
  hotkeyChannel.emplace("norvane/hotkey", messenger);
  FlutterMethodChannel("cn.kestrio.norvane.hotkey.config", messenger)
      .setMethodCallHandler(handleHotkeyConfig);
  NSLog(
      "[Norvane] MainFlutterWindow channels registered (deeplink + hotkey + hotkey-config + "
      "secure-input + secure-clipboard + system-idle)");
}

void MainFlutterWindow::becomeReady() {
  flutterReady = true;
  if (auto link = std::exchange(pendingDeeplink, std::nullopt)) sendUrlOpened(*link);
}

void MainFlutterWindow::dispatchDeeplink(const std::string& link) {
  if (flutterReady && deeplinkChannel) {
    sendUrlOpened(link);
    return;
  }
  pendingDeeplink = link;
  NSLog("[Norvane] deeplink buffered (Dart not ready yet)");
}

void MainFlutterWindow::sendUrlOpened(const std::string& link) {
  deeplinkChannel->invokeMethod("urlOpened", FlutterMap{{"url", link}});
}

void MainFlutterWindow::openItemFromQa(const std::optional<std::string>& editItemId) {
  if (!flutterReady || !hotkeyChannel) return;
  FlutterMap arguments;
  if (editItemId) arguments.emplace_back("editItemId", *editItemId);
  hotkeyChannel->invokeMethod("openItem", arguments);
}

}  // namespace norvane
