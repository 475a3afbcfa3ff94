#include "platform/ns_application.h"

#include "platform/platform.h"

namespace norvane {

void NSApplication::removeWindow(const NSWindow& window) {
  std::erase_if(windows_, [&](const auto& listed) { return listed.get() == &window; });
}

void NSApplication::activateIgnoringOtherApps() {
  platform().windowServer.activateIgnoringOtherApps();
}

void NSApplication::releaseAll() {
  windows_.clear();
  delegate_.reset();
}

}  // namespace norvane
