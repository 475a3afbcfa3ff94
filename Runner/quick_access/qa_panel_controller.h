#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/flutter/flutter_method_channel.h"
#include "platform/flutter/flutter_value.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/graphics.h"
#include "platform/ns_window.h"
#include "quick_access/qa_panel.h"

namespace norvane {

/// Owns the Quick Access panel, its UI engine and their channel, all made at the first show and
/// kept for the life of the process. Main thread.
class QAPanelController : public NSWindowDelegate,
                          public std::enable_shared_from_this<QAPanelController> {
 public:
  /// Tells the panel's UI which application is in front, and gives the panel the keyboard without
  /// activating this one. A panel that is up already is placed and told again.
  void show();
  /// Takes a panel that is up off screen and unpins it; its UI and the main UI are told.
  void hide();
  /// Hides a panel that is up, shows it otherwise.
  void toggle();
  /// A panel that has lost the keyboard goes, unless it is pinned.
  void windowDidResignKey(NSWindow& window) override;
  /// A panel that the window manager closes goes as by `hide()`.
  void windowWillClose(NSWindow& window) override;

  /// Identity, name and icon of the application in front; empty when there is none or it is this
  /// one.
  static FlutterMap captureForegroundApp();
  /// `image` drawn into a square of `side` pixels, as a PNG file; nothing when that cannot be done.
  static std::optional<std::vector<std::uint8_t>> pngData(const std::shared_ptr<NSImage>& image,
                                                          int side);

  std::shared_ptr<QAPanel> panel;  ///< when it exists, all of the following do
  std::shared_ptr<FlutterEngine> engine;
  std::shared_ptr<FlutterViewController> viewController;
  std::optional<FlutterMethodChannel> channel;
  bool pinned = false;  ///< the panel stays up without the keyboard

 private:
  void ensurePanel();
  void place();
  void setPinned(FlutterValueView arguments);
};

}  // namespace norvane
