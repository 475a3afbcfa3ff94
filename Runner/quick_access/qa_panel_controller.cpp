#include "quick_access/qa_panel_controller.h"

#include <string>
#include <utility>

#include "platform/log.h"
#include "platform/ns_application.h"
#include "platform/platform.h"
#include "platform/screens.h"
#include "window/main_flutter_window.h"
#include "window/plugin_registrant.h"

namespace norvane {
namespace {

constexpr NSSize kPanelSize{820, 600};
// The height of the panel's centre, as a part of the visible height.
constexpr double kCentreHeight = 0.6;

constexpr WindowAppearance kAppearance{
    .level = NSFloatingWindowLevel,
    .collectionBehavior =
        NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary,
    .opaque = false,
    .clearBackground = true,
    .hasShadow = false,
    .hidesOnDeactivate = false,
    .movableByWindowBackground = false,
};

std::shared_ptr<QAPanel> makePanel(const std::shared_ptr<FlutterViewController>& viewController) {
  auto panel = platform().application.makeWindow<QAPanel>(NSRect{{0, 0}, kPanelSize},
                                                          NSWindowStyleMaskNonactivatingPanel);
  panel->setContentViewController(viewController);
  panel->setContentSize(kPanelSize);
  panel->setAppearance(kAppearance);
  panel->setReleasedWhenClosed(false);
  return panel;
}

/// Brings the main window to the front and asks its UI to open the item that `arguments` name.
void openMain(FlutterValueView arguments) {
  platform().application.activateIgnoringOtherApps();
  const auto window = MainFlutterWindow::first();
  if (!window) return;
  window->makeKeyAndOrderFront();
  std::optional<std::string> editItemId;
  if (const auto map = arguments.textKeyedMap()) {
    if (const auto text = (*map)["editItemId"].text()) editItemId = *text;
  }
  window->openItemFromQa(editItemId);
}

}  // namespace

void QAPanelController::ensurePanel() {
  if (panel) return;
  const auto newEngine = std::make_shared<FlutterEngine>("norvane-qa");
  newEngine->runWithEntrypoint("qaMain");
  const auto newViewController = std::make_shared<FlutterViewController>(newEngine);
  RegisterGeneratedPlugins(*newViewController);
  newViewController->setClearBackground();
  const auto newPanel = makePanel(newViewController);
  newPanel->setDelegate(weak_from_this());

  FlutterMethodChannel newChannel("cn.kestrio.norvane.qa_panel", newEngine->binaryMessenger());
  newChannel.setMethodCallHandler(
      [weakSelf = weak_from_this()](const FlutterMethodCall& call, FlutterResult result) {
        const auto self = weakSelf.lock();
        if (call.method() == "close") {
          if (self) self->hide();
        } else if (call.method() == "setPinned") {
          if (self) self->setPinned(call.arguments());
        } else if (call.method() == "openMain") {
          if (self) self->hide();
          openMain(call.arguments());
        } else {
          result(FlutterMethodNotImplemented);
          return;
        }
        result(nullptr);
      });

  engine = newEngine;
  viewController = newViewController;
  panel = newPanel;
  channel = std::move(newChannel);
  NSLog("[Norvane] QA panel engine created (entrypoint=qaMain)");
}

void QAPanelController::show() {
  // First, so that the panel itself can never be what is captured.
  const FlutterValue foregroundApp = captureForegroundApp();
  ensurePanel();
  place();
  panel->makeKeyAndOrderFront();
  channel->invokeMethod("shown", foregroundApp);
}

void QAPanelController::place() {
  const auto visible = platform().screens.mainScreenVisibleFrame();
  if (!visible) return;
  // The size as well: on a smaller screen it may have been cut.
  panel->setFrame(
      {{visible->midX() - kPanelSize.width / 2,
        visible->origin.y + kCentreHeight * visible->size.height - kPanelSize.height / 2},
       kPanelSize},
      /*display=*/true, /*animate=*/false);
}

void QAPanelController::hide() {
  if (!panel || !panel->isVisible()) return;
  pinned = false;
  panel->orderOut();
  channel->invokeMethod("hidden");
  if (const auto window = MainFlutterWindow::first()) window->syncLockState();
}

void QAPanelController::toggle() {
  if (panel && panel->isVisible()) {
    hide();
  } else {
    show();
  }
}

void QAPanelController::windowDidResignKey(NSWindow& /*window*/) {
  if (!pinned) hide();
}

void QAPanelController::windowWillClose(NSWindow& /*window*/) { hide(); }

void QAPanelController::setPinned(FlutterValueView arguments) {
  const auto map = arguments.textKeyedMap();
  pinned = map && (*map)["pinned"].boolean().value_or(false);
}

}  // namespace norvane
