#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/geometry.h"
#include "platform/window_server.h"

namespace norvane {

class FlutterViewController;

class NSWindow;

/// Hears of what happens to a window. Main thread.
class NSWindowDelegate {
 public:
  virtual ~NSWindowDelegate() = default;
  /// The window is no longer the one that the keyboard speaks to. In a turn of its own, and not
  /// when the window has the keyboard again by then.
  virtual void windowDidResignKey(NSWindow& window) = 0;
  /// The window is about to be closed, by the person or the host; it is still on screen.
  virtual void windowWillClose(NSWindow& /*window*/) {}
};

/// A window of the application. Made with `NSApplication::makeWindow`, which owns it. Main thread.
class NSWindow : public std::enable_shared_from_this<NSWindow> {
 public:
  /// Not on screen; `contentRect` in screen coordinates.
  NSWindow(const NSRect& contentRect, NSWindowStyleMask styleMask);
  virtual ~NSWindow();
  NSWindow(const NSWindow&) = delete;
  NSWindow& operator=(const NSWindow&) = delete;

  /// Of the object, for whoever looks from outside.
  virtual std::string className() const { return "NSWindow"; }

  /// Whether the window may be the one that the keyboard speaks to; the same at each call.
  virtual bool canBecomeKeyWindow() const { return true; }
  /// Whether it is one that a person means by the application's window; a panel is not. The same
  /// at each call.
  virtual bool canBecomeMainWindow() const { return true; }

  /// Called once, when the main interface file that made the window is loaded.
  virtual void awakeFromNib() {}

  /// Shows the window's UI; its engine starts to run, unless it does already.
  void setContentViewController(std::shared_ptr<FlutterViewController> controller);
  const std::shared_ptr<FlutterViewController>& contentViewController() const {
    return contentViewController_;
  }

  void makeKeyAndOrderFront() { native_->makeKeyAndOrderFront(); }
  void orderOut() { native_->orderOut(); }
  bool isVisible() const { return native_->isVisible(); }

  /// Takes the window off screen; the application lets it go, unless that was turned off.
  void close();
  void setReleasedWhenClosed(bool released) { releasedWhenClosed_ = released; }

  NSRect frame() const { return native_->frame(); }
  void setFrame(const NSRect& frame, bool display, bool animate);
  /// Without a title bar the content is as large as the frame.
  void setContentSize(const NSSize& size);
  void setMinSize(const NSSize& size) { native_->setMinSize(size); }
  void setMaxSize(const NSSize& size) { native_->setMaxSize(size); }
  NSWindowStyleMask styleMask() const { return styleMask_; }
  void setStyleMask(NSWindowStyleMask styleMask);
  void setAppearance(const WindowAppearance& appearance) { native_->setAppearance(appearance); }

  void setDelegate(std::weak_ptr<NSWindowDelegate> delegate) { delegate_ = std::move(delegate); }

  /// While the name is not empty, every change of the frame is kept in the user defaults under
  /// "NSWindow Frame " and the name. Setting it applies the frame that is kept there.
  void setFrameAutosaveName(const std::string& name);
  /// Applies the frame that is kept under `name`; nothing happens when none is, or the record is
  /// not understood.
  void setFrameUsingName(const std::string& name);
  const std::string& frameAutosaveName() const { return frameAutosaveName_; }

  // The desktop's side

  void orderFront() { native_->orderFront(); }
  /// The person or the desktop has moved or resized the window.
  void frameDidChange();
  void didResignKey();

 private:
  std::unique_ptr<NativeWindow> native_;
  std::shared_ptr<FlutterViewController> contentViewController_;
  NSWindowStyleMask styleMask_;
  std::weak_ptr<NSWindowDelegate> delegate_;
  std::string frameAutosaveName_;
  bool releasedWhenClosed_ = true;
};

}  // namespace norvane
