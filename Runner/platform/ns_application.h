#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
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

/// The application: owns its delegate and its windows, and has the life that is the same on every
/// desktop. Main thread.
class NSApplication {
 public:
  /// `terminate` ends the main loop.
  explicit NSApplication(std::function<void()> terminate) : terminate_(std::move(terminate)) {}

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

  // The desktop's side

  /// Makes the delegate, has `openWindows` open what is to be open, and tells the delegate that
  /// launch has finished.
  void launch(const MainInterface& mainInterface, const std::function<void()>& openWindows);
  /// The main window of `mainInterface`, awake and not yet on screen.
  std::shared_ptr<NSWindow> loadMainWindow(const MainInterface& mainInterface);
  /// The person opens a link with the application; without a text when the event carries none.
  void openURL(const std::optional<std::string>& url);
  /// The person starts the application that runs already.
  void reopen();
  /// The person closes `window`. In a later turn, when no main window is left on screen, the
  /// delegate is asked whether that is the end.
  void closeWindow(NSWindow& window);
  /// Whether a window is on screen that could be the main one. A panel is not what a person means
  /// by the application's window.
  bool hasVisibleWindows() const;

  /// The keyboard speaks to `window` now; to none of the application's when it is null. The window
  /// that had it before is told in a later turn, unless it has it again by then.
  void setKeyWindow(NSWindow* window);
  bool isKey(const NSWindow& window) const { return keyWindow_.lock().get() == &window; }
  bool hasKeyWindow() const { return !keyWindow_.expired(); }

  /// Lets delegate and windows go, at the end of the main loop.
  void releaseAll();

 private:
  std::function<void()> terminate_;
  NSAppleEventManager appleEventManager_;
  std::shared_ptr<NSApplicationDelegate> delegate_;
  std::vector<std::shared_ptr<NSWindow>> windows_;
  std::weak_ptr<NSWindow> keyWindow_;
};

}  // namespace norvane
