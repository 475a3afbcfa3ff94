#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/ns_apple_event_manager.h"
#include "platform/ns_window.h"

namespace norvane {

/// What the platform asks and tells an application, never inside a call of the host's. Main thread.
class NSApplicationDelegate {
 public:
  virtual ~NSApplicationDelegate() = default;

  /// Once, after the main interface file has been loaded and before any link is handed over.
  virtual void applicationDidFinishLaunching() = 0;
  /// Asked when the person has closed a window and no main one is visible any more; true ends the
  /// process.
  virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
  /// The person reopened the running application; true lets the platform do what it does by itself.
  virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
  /// Whether the state of windows may be restored from typed archives only; asked by desktops that
  /// restore it.
  virtual bool applicationSupportsSecureRestorableState() = 0;
};

/// What the application's main interface file makes.
struct MainInterface {
  std::function<std::shared_ptr<NSApplicationDelegate>()> makeDelegate;
  /// Makes the main window with `NSApplication::makeWindow`.
  std::function<std::shared_ptr<NSWindow>()> makeMainWindow;
};

/// The application: owns its delegate and its windows. Main thread.
class NSApplication {
 public:
  const std::shared_ptr<NSApplicationDelegate>& delegate() const { return delegate_; }
  void setDelegate(std::shared_ptr<NSApplicationDelegate> delegate) {
    delegate_ = std::move(delegate);
  }

  /// In the order in which they were made.
  const std::vector<std::shared_ptr<NSWindow>>& windows() const { return windows_; }

  template <class Window, class... Args>
  std::shared_ptr<Window> makeWindow(Args&&... args) {
    auto window = std::make_shared<Window>(std::forward<Args>(args)...);
    windows_.push_back(window);
    return window;
  }
  void removeWindow(const NSWindow& window);

  /// Brings the application to the front, whichever is there now.
  void activateIgnoringOtherApps();

  NSAppleEventManager& appleEventManager() { return appleEventManager_; }

  /// Lets delegate and windows go, at the end of the main loop.
  void releaseAll();

 private:
  NSAppleEventManager appleEventManager_;
  std::shared_ptr<NSApplicationDelegate> delegate_;
  std::vector<std::shared_ptr<NSWindow>> windows_;
};

}  // namespace norvane
