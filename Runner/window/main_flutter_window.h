#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/flutter/flutter_method_channel.h"
#include "platform/keyboard_input.h"
#include "platform/ns_window.h"

namespace norvane {

/// The application's main window and the hub through which the main UI reaches the host. It opens
/// every channel of the main engine, and holds back a deep link until the UI is ready for it.
/// Main thread.
class MainFlutterWindow : public NSWindow {
 public:
  using NSWindow::NSWindow;

  /// The first of the application's windows that is a main window; null when there is none.
  static std::shared_ptr<MainFlutterWindow> first();

  std::string className() const override { return "MainFlutterWindow"; }
  void awakeFromNib() override;

  /// Sends `link` to the UI as "urlOpened", or keeps it, the latest winning, until the UI is ready.
  void dispatchDeeplink(const std::string& link);
  /// Asks the UI to open the item, or no particular one; nothing happens while it is not ready.
  void openItemFromQa(const std::optional<std::string>& editItemId);
  /// Has the UI look whether the vault is locked; nothing happens while it is not ready.
  void syncLockState();

  std::shared_ptr<void> autoFillBridge;  ///< absent on systems older than 11.0
  std::optional<FlutterMethodChannel> deeplinkChannel;
  std::optional<FlutterMethodChannel> hotkeyChannel;
  std::int64_t secureInputRefCount = 0;              ///< "enable" calls without their "disable"
  std::shared_ptr<TISInputSource> savedInputSource;  ///< to go back to when secure input ends
  bool flutterReady = false;  ///< the UI has called "flutterReady"; never reset
  std::optional<std::string> pendingDeeplink;
  std::optional<std::string> currentMode;  ///< the mode last asked for

 private:
  void openChannels(const std::shared_ptr<FlutterBinaryMessenger>& messenger);
  static FlutterMethodChannel::Handler readinessHandler(std::weak_ptr<MainFlutterWindow> window);
  std::weak_ptr<MainFlutterWindow> weakMainWindow();
  void becomeReady();
  void sendUrlOpened(const std::string& link);

  // window_modes.cpp
  static FlutterMethodChannel::Handler windowModesHandler(std::weak_ptr<MainFlutterWindow> window);
  void applyMode(const std::string& mode);
  void layOut(const std::string& mode);
  NSSize rememberedVaultSize();
  void applyFirstLaunchFrame();
  void setInitialFrame();
};

}  // namespace norvane
