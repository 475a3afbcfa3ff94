#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/carbon_events.h"
#include "platform/flutter/flutter_app_delegate.h"
#include "platform/ns_apple_event_manager.h"
#include "platform/ns_status_bar.h"
#include "platform/updater_controller.h"
#include "services/app_services.h"

namespace norvane {

class QAPanelController;

/// The application's delegate: decides the order in which the host's services are switched on, and
/// owns what lives as long as the process. Main thread.
class AppDelegate : public FlutterAppDelegate,
                    public AppServices,
                    public std::enable_shared_from_this<AppDelegate> {
 public:
  AppDelegate();
  ~AppDelegate() override;

  void applicationDidFinishLaunching() override;
  /// The process goes on without a window.
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
  bool applicationSupportsSecureRestorableState() override { return true; }

  /// Registers the first free combination of the chain for the choice. Never called while one is
  /// registered.
  void installGlobalHotkey();

  void setHotkeyChoice(const std::string& choice) override;
  std::string hotkeyChoice() const override { return currentHotkeyChoice; }
  std::optional<std::string> registeredHotkeyLabel() const override {
    return currentRegisteredLabel;
  }
  void checkForUpdates() override { updaterController->checkForUpdates(); }

  const std::unique_ptr<SPUStandardUpdaterController> updaterController;
  std::optional<std::string> pendingDeeplinkAtAppLevel;  ///< came while there was no main window
  std::optional<EventHotKeyRef> hotkeyRef;
  std::optional<EventHandlerRef> hotkeyHandlerRef;
  std::string currentHotkeyChoice = "auto";
  std::optional<std::string> currentRegisteredLabel;
  const std::shared_ptr<QAPanelController> qaPanel;
  std::unique_ptr<NSStatusItem> statusItem;

 private:
  // services/global_hotkey.cpp
  static OSStatus hotkeyPressed(const std::weak_ptr<AppDelegate>& delegate,
                                const CarbonEvent& event);
  // status_item.cpp
  void installStatusItem();
  void statusItemClicked();
  // url_intake.cpp
  void handleGetURLEvent(const NSAppleEventDescriptor& event);
  void retryPendingDeeplink();
};

}  // namespace norvane
