#pragma once

#include "platform/ns_application.h"

namespace norvane {

/// The UI toolkit's application delegate: answers as an application without wishes of its own.
class FlutterAppDelegate : public NSApplicationDelegate {
 public:
  void applicationDidFinishLaunching() override {}
  bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
  bool applicationShouldHandleReopen(bool) override { return true; }
  bool applicationSupportsSecureRestorableState() override { return false; }
};

}  // namespace norvane
