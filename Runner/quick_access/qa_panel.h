#pragma once

#include <string>

#include "platform/ns_panel.h"

namespace norvane {

/// The Quick Access panel: takes the keyboard, and is never the application's main window.
class QAPanel : public NSPanel {
 public:
  using NSPanel::NSPanel;

  std::string className() const override { return "QAPanel"; }
  bool canBecomeKeyWindow() const override { return true; }
  bool canBecomeMainWindow() const override { return false; }
};

}  // namespace norvane
