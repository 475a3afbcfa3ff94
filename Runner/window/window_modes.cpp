// The main window's frames.

#include <algorithm>
#include <memory>

#include "platform/dispatch.h"
#include "platform/ns_user_defaults.h"
#include "platform/platform.h"
#include "platform/window_server.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kFrameAutosaveName = "NorvaneMainWindow";
constexpr const char* kFrameKey = "NSWindow Frame NorvaneMainWindow";
constexpr const char* kDidSetInitialFrameKey = "NorvaneDidSetInitialFrameV4";

// First launch, in points.
constexpr double kInitialMargin = 80;  // both sides together
constexpr double kInitialMinWidth = 720;
constexpr double kInitialMaxWidth = 940;
constexpr double kInitialHeight = 600;

NSRect centred(const NSSize& size, const NSRect& area) {
  return {{area.midX() - size.width / 2, area.midY() - size.height / 2}, size};
}

}  // namespace

void MainFlutterWindow::applyFirstLaunchFrame() {
  NSUserDefaults& defaults = platform().userDefaults;
  if (defaults.boolForKey(kDidSetInitialFrameKey)) {
    setFrameAutosaveName(kFrameAutosaveName);
    return;
  }
  defaults.removeObjectForKey(kFrameKey);
  setFrameAutosaveName(kFrameAutosaveName);
  platform().dispatch.mainAsync([weakSelf = weak_from_this()] {
    const auto self = std::static_pointer_cast<MainFlutterWindow>(weakSelf.lock());
    if (self) self->setInitialFrame();
  });
}

void MainFlutterWindow::setInitialFrame() {
  const auto visible = platform().screens.mainScreenVisibleFrame();
  if (!visible) return;
  const double width =
      std::clamp(visible->size.width - kInitialMargin, kInitialMinWidth, kInitialMaxWidth);
  setFrame(centred({width, kInitialHeight}, *visible), /*display=*/true, /*animate=*/false);
  platform().userDefaults.setBool(true, kDidSetInitialFrameKey);
}

}  // namespace norvane
