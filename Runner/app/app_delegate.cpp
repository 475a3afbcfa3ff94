#include "app/app_delegate.h"

#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/ns_application.h"
#include "platform/platform.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

/// Shows a main window that the launch has left hidden.
void showMainWindowIfHidden() {
  const auto window = MainFlutterWindow::first();
  if (!window) {
    NSLog("[Norvane] no MainFlutterWindow found post-launch");
    return;
  }
  if (window->isVisible()) return;
  window->makeKeyAndOrderFront();
  platform().application.activateIgnoringOtherApps();
  NSLog("[Norvane] forced MainFlutterWindow visible (post-launch fallback)");
}

}  // namespace

void AppDelegate::applicationDidFinishLaunching() {
  platform().application.appleEventManager().setEventHandler(
      [self = weak_from_this()](const auto& event, auto&) {
        if (const auto delegate = self.lock()) delegate->handleGetURLEvent(event);
      },
      kInternetEventClass, kAEGetURL);
  FlutterAppDelegate::applicationDidFinishLaunching();
  platform().dispatch.mainAsync(showMainWindowIfHidden);
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows) {
  if (hasVisibleWindows) return true;
  if (const auto window = MainFlutterWindow::first()) {
    window->makeKeyAndOrderFront();
    platform().application.activateIgnoringOtherApps();
  }
  return true;
}

void AppDelegate::handleGetURLEvent(const NSAppleEventDescriptor& event) {
  const NSAppleEventDescriptor* url = event.paramDescriptorForKeyword(keyDirectObject);
  if (!url || !url->stringValue()) return;
  if (const auto window = MainFlutterWindow::first()) window->dispatchDeeplink(*url->stringValue());
}

}  // namespace norvane
