#include "platform/ns_application.h"

#include <algorithm>

#include "platform/dispatch.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/platform.h"

namespace norvane {

void NSApplication::removeWindow(const NSWindow& window) {
  std::erase_if(windows_, [&](const auto& listed) { return listed.get() == &window; });
}

void NSApplication::activateIgnoringOtherApps() {
  platform().windowServer.activateIgnoringOtherApps();
}

void NSApplication::launch(const MainInterface& mainInterface,
                           const std::function<void()>& openWindows) {
  delegate_ = mainInterface.makeDelegate();
  openWindows();
  delegate_->applicationDidFinishLaunching();
}

std::shared_ptr<NSWindow> NSApplication::loadMainWindow(const MainInterface& mainInterface) {
  auto window = mainInterface.makeMainWindow();
  window->awakeFromNib();
  return window;
}

void NSApplication::openURL(const std::optional<std::string>& url) {
  NSAppleEventDescriptor event;
  if (url) event.setParamDescriptor(NSAppleEventDescriptor(*url), keyDirectObject);
  appleEventManager_.dispatchEvent(kInternetEventClass, kAEGetURL, event);
}

void NSApplication::reopen() {
  const bool hadVisibleWindows = hasVisibleWindows();
  activateIgnoringOtherApps();
  delegate_->applicationShouldHandleReopen(hadVisibleWindows);
}

void NSApplication::closeWindow(NSWindow& window) {
  window.close();
  platform().dispatch.mainAsync([this] {
    if (hasVisibleWindows()) return;
    if (delegate_->applicationShouldTerminateAfterLastWindowClosed()) terminate_();
  });
}

bool NSApplication::hasVisibleWindows() const {
  return std::ranges::any_of(windows_, [](const std::shared_ptr<NSWindow>& window) {
    return window->isVisible() && window->canBecomeMainWindow();
  });
}

void NSApplication::setKeyWindow(NSWindow* window) {
  const auto resigning =
      std::exchange(keyWindow_, window ? window->weak_from_this() : std::weak_ptr<NSWindow>())
          .lock();
  if (!resigning || resigning.get() == window) return;
  platform().dispatch.mainAsync([this, weakWindow = std::weak_ptr(resigning)] {
    const auto resigned = weakWindow.lock();
    // One that has the keyboard again by now has nothing to hear.
    if (resigned && !isKey(*resigned)) resigned->didResignKey();
  });
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
