#include "window/main_flutter_window.h"

#include <utility>

#include "autofill/auto_fill_bridge.h"
#include "icloud/icloud_bridge.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/log.h"
#include "platform/ns_application.h"
#include "platform/ns_process_info.h"
#include "platform/platform.h"
#include "services/hotkey_config_channel.h"
#include "services/launch_at_login_channel.h"
#include "services/secure_clipboard_channel.h"
#include "services/secure_input_channel.h"
#include "services/system_idle_channel.h"
#include "services/updater_channel.h"
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
  openChannels(controller->engine().binaryMessenger());
  RegisterGeneratedPlugins(*controller);
  NSWindow::awakeFromNib();
  applyFirstLaunchFrame();
}

void MainFlutterWindow::openChannels(const std::shared_ptr<FlutterBinaryMessenger>& messenger) {
  const auto weakSelf = weakMainWindow();
  const auto open = [&](const char* name, FlutterMethodChannel::Handler handler) {
    FlutterMethodChannel channel(name, messenger);
    channel.setMethodCallHandler(std::move(handler));
    return channel;
  };
  open("cn.kestrio.norvane.window", windowModesHandler(weakSelf));
  deeplinkChannel = open("norvane/deeplink", readinessHandler(weakSelf));
  hotkeyChannel.emplace("norvane/hotkey", messenger);  // the host calls on it, and serves nothing
  open("cn.kestrio.norvane.hotkey.config", handleHotkeyConfig);
  open("cn.kestrio.norvane.updater", handleUpdater);
  open("cn.kestrio.norvane.launch_at_login", handleLaunchAtLogin);
  open("cn.kestrio.norvane.secure_input", secureInputHandler(weakSelf));
  open("cn.kestrio.norvane.secure_clipboard", handleSecureClipboard);
  open("cn.kestrio.norvane.system_idle", handleSystemIdle);
  NSLog(
      "[Norvane] MainFlutterWindow channels registered (deeplink + hotkey + hotkey-config + "
      "secure-input + secure-clipboard + system-idle)");
  if (platform().processInfo.isOperatingSystemAtLeastVersion({11, 0, 0})) {
    autoFillBridge = AutoFillBridge::make(messenger);
  }
  IcloudBridge::registerOn(FlutterMethodChannel("cn.kestrio.norvane.icloud", messenger));
}

std::weak_ptr<MainFlutterWindow> MainFlutterWindow::weakMainWindow() {
  return std::static_pointer_cast<MainFlutterWindow>(shared_from_this());
}

FlutterMethodChannel::Handler MainFlutterWindow::readinessHandler(
    std::weak_ptr<MainFlutterWindow> weakWindow) {
  return [weakWindow = std::move(weakWindow)](const FlutterMethodCall& call, FlutterResult result) {
    if (const auto window = weakWindow.lock()) {
      if (call.method() != "flutterReady") {
        result(FlutterMethodNotImplemented);
        return;
      }
      window->becomeReady();
    }
    result(nullptr);
  };
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

void MainFlutterWindow::syncLockState() {
  if (flutterReady && hotkeyChannel) hotkeyChannel->invokeMethod("syncLockState");
}

}  // namespace norvane
