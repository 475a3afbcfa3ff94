#pragma once

#include <functional>

struct _GtkWidget;

namespace norvane {

class FlutterEmbedder;
class FlutterViewController;

/// What plays the UI programs, and draws them in the windows. Main thread; outlives both.
class WindowUi {
 public:
  virtual ~WindowUi() = default;

  virtual FlutterEmbedder& embedder() = 0;
  /// The widget that shows `controller`'s UI, whose engine may not run yet; floating, to be put
  /// into a window that is not realized. Destroyed by the window, before or after the engine ends.
  virtual _GtkWidget* makeView(FlutterViewController& controller) = 0;
  /// Calls `drawn` once: when the main window's UI has drawn for the first time or is found not to
  /// run, at once where there is nothing to wait for. After the launch.
  virtual void whenDrawn(std::function<void()> drawn) { drawn(); }
  /// The main loop has ended, and the host is about to be let go. True when threads of the UI run
  /// on after it, so that the process has to end without waiting for them.
  virtual bool processEnds() { return false; }
};

}  // namespace norvane
