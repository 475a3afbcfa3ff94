#pragma once

#include <memory>

#include "platform/flutter/flutter_app_delegate.h"
#include "platform/ns_apple_event_manager.h"

namespace norvane {

/// The application's delegate: decides the order in which the host's services are switched on, and
/// owns what lives as long as the process. Main thread.
class AppDelegate : public FlutterAppDelegate, public std::enable_shared_from_this<AppDelegate> {
 public:
  void applicationDidFinishLaunching() override;
  /// The process goes on without a window.
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
  bool applicationSupportsSecureRestorableState() override { return true; }

  void handleGetURLEvent(const NSAppleEventDescriptor& event);
};

}  // namespace norvane
