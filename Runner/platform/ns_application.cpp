#include "platform/ns_application.h"

#include "platform/flutter/flutter_view_controller.h"
#include "platform/platform.h"

namespace norvane {

void NSApplication::removeWindow(const NSWindow& window) {
  std::erase_if(windows_, [&](const auto& listed) { return listed.get() == &window; });
}

void NSApplication::activateIgnoringOtherApps() {
  platform().windowServer.activateIgnoringOtherApps();
}

void NSApplication::releaseAll() {
  // The UIs end first: windows and delegate hold calls that were never answered, and by now there
  // is nobody to answer.
  for (const auto& window : windows_) {
    if (const auto& controller = window->contentViewController()) {
      controller->engine().binaryMessenger()->engineEnded();
    }
  }
  windows_.clear();
  delegate_.reset();
}

}  // namespace norvane
