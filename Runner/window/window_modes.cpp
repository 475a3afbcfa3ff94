// The main window's frames: the layouts that the UI asks for, and the first launch's.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "platform/dispatch.h"
#include "platform/ns_user_defaults.h"
#include "platform/platform.h"
#include "platform/screens.h"
#include "platform/window_server.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kAuthMode = "auth";
constexpr const char* kVaultMode = "vault";  // every other name selects the same layout

constexpr const char* kFrameAutosaveName = "NorvaneMainWindow";
constexpr const char* kFrameKey = "NSWindow Frame NorvaneMainWindow";
constexpr const char* kDidSetInitialFrameKey = "NorvaneDidSetInitialFrameV4";
constexpr const char* kDidSetInitialVaultFrameKey = "NorvaneDidSetInitialVaultFrameV14";

// Points.
constexpr NSSize kAuthMinSize{640, 480};
constexpr NSSize kAuthSize{820, 540};
constexpr NSSize kVaultMinSize{940, 600};
constexpr NSSize kVaultSize{940, 600};
constexpr double kMargin = 80;  // both sides of the visible area together
constexpr double kInitialMinWidth = 720;
constexpr double kInitialMaxWidth = 940;
constexpr double kInitialHeight = 600;

NSRect centred(const NSSize& size, const NSRect& area) {
  return {{area.midX() - size.width / 2, area.midY() - size.height / 2}, size};
}

std::string modeOf(FlutterValueView arguments) {
  if (const auto map = arguments.textKeyedMap()) {
    if (const auto mode = (*map)["mode"].text()) return std::string(*mode);
  }
  return kVaultMode;
}

}  // namespace

FlutterMethodChannel::Handler MainFlutterWindow::windowModesHandler(
    std::weak_ptr<MainFlutterWindow> weakWindow) {
  return [weakWindow = std::move(weakWindow)](const FlutterMethodCall& call, FlutterResult result) {
    const auto window = weakWindow.lock();
    if (!window) {
      result(FlutterError{"no_window", {}, {}});
    } else if (call.method() == "setMode") {
      window->applyMode(modeOf(call.arguments()));
      result(nullptr);
    } else {
      result(FlutterMethodNotImplemented);
    }
  };
}

void MainFlutterWindow::applyMode(const std::string& mode) {
  if (currentMode == mode) return;
  currentMode = mode;
  platform().dispatch.mainAsync([weakSelf = weakMainWindow(), mode] {
    if (const auto self = weakSelf.lock()) self->layOut(mode);
  });
}

void MainFlutterWindow::layOut(const std::string& mode) {
  const auto visible = platform().screens.mainScreenVisibleFrame();
  if (!visible) return;
  NSSize size = kAuthSize;
  if (mode == kAuthMode) {
    setFrameAutosaveName("");  // this size must never become the vault's
    setMinSize(kAuthMinSize);
    setMaxSize(kUnboundedSize);
    setStyleMask(styleMask() | NSWindowStyleMaskResizable);
  } else {
    setMinSize(kVaultMinSize);
    setMaxSize(kUnboundedSize);
    setStyleMask(styleMask() | NSWindowStyleMaskResizable);
    size = rememberedVaultSize();
    size.width = std::min(size.width, std::max(visible->size.width - kMargin, 0.0));
    size.height = std::min(size.height, std::max(visible->size.height - kMargin, 0.0));
  }
  setFrame(centred(size, *visible), /*display=*/true, /*animate=*/true);
}

NSSize MainFlutterWindow::rememberedVaultSize() {
  NSUserDefaults& defaults = platform().userDefaults;
  setFrameAutosaveName(kFrameAutosaveName);
  if (defaults.stringForKey(kFrameKey) && defaults.boolForKey(kDidSetInitialVaultFrameKey)) {
    setFrameUsingName(kFrameAutosaveName);
    return frame().size;
  }
  defaults.setBool(true, kDidSetInitialVaultFrameKey);
  return kVaultSize;
}

void MainFlutterWindow::applyFirstLaunchFrame() {
  NSUserDefaults& defaults = platform().userDefaults;
  const bool isFirstLaunch = !defaults.boolForKey(kDidSetInitialFrameKey);
  if (isFirstLaunch) defaults.removeObjectForKey(kFrameKey);
  setFrameAutosaveName(kFrameAutosaveName);
  if (!isFirstLaunch) return;
  platform().dispatch.mainAsync([weakSelf = weakMainWindow()] {
    if (const auto self = weakSelf.lock()) self->setInitialFrame();
  });
}

void MainFlutterWindow::setInitialFrame() {
  const auto visible = platform().screens.mainScreenVisibleFrame();
  if (!visible) return;
  const double width =
      std::clamp(visible->size.width - kMargin, kInitialMinWidth, kInitialMaxWidth);
  setFrame(centred({width, kInitialHeight}, *visible), /*display=*/true, /*animate=*/false);
  platform().userDefaults.setBool(true, kDidSetInitialFrameKey);
}

}  // namespace norvane
