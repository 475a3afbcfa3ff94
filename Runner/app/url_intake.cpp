// The application delegate's intake of links: the unlock link shows Quick Access, every other goes
// to the main UI as it is.

#include <memory>
#include <string>
#include <utility>

#include "app/app_delegate.h"
#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/ns_application.h"
#include "platform/platform.h"
#include "quick_access/qa_panel_controller.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kUnlockPrefix = "norvane://unlock";
constexpr double kRetryDelay = 0.1;  // seconds

/// False when there is no main window to take the link.
bool bringToMainWindow(const std::string& link) {
  const auto window = MainFlutterWindow::first();
  if (!window) return false;
  window->makeKeyAndOrderFront();
  window->dispatchDeeplink(link);
  return true;
}

}  // namespace

void AppDelegate::handleGetURLEvent(const NSAppleEventDescriptor& event) {
  const NSAppleEventDescriptor* url = event.paramDescriptorForKeyword(keyDirectObject);
  if (!url || !url->stringValue()) return;
  const std::string& link = *url->stringValue();
  NSLog("[Norvane] received deeplink: " + link);
  if (link.starts_with(kUnlockPrefix)) {
    qaPanel->show();
    return;
  }
  platform().application.activateIgnoringOtherApps();
  if (bringToMainWindow(link)) return;
  pendingDeeplinkAtAppLevel = link;
  platform().dispatch.mainAfter(kRetryDelay, [weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) self->retryPendingDeeplink();
  });
}

void AppDelegate::retryPendingDeeplink() {
  if (!pendingDeeplinkAtAppLevel || !MainFlutterWindow::first()) return;
  bringToMainWindow(*std::exchange(pendingDeeplinkAtAppLevel, std::nullopt));
}

}  // namespace norvane
