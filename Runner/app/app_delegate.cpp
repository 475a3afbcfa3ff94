#include "app/app_delegate.h"

#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/ns_application.h"
#include "platform/platform.h"
#include "quick_access/qa_panel_controller.h"
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

AppDelegate::AppDelegate()
    : updaterController(platform().updater.makeUpdaterController(/*startingUpdater=*/true)),
      qaPanel(std::make_shared<QAPanelController>()) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  installGlobalHotkey();
  installStatusItem();
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

}  // namespace norvane
