#pragma once

#include "platform/ns_window.h"

namespace norvane {

/// An auxiliary window: with NSWindowStyleMaskNonactivatingPanel it takes the keyboard without
/// activating the application.
class NSPanel : public NSWindow {
 public:
  using NSWindow::NSWindow;
};

}  // namespace norvane
