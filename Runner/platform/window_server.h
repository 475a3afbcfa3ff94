#pragma once

#include <limits>
#include <memory>

#include "platform/geometry.h"

namespace norvane {

class NSWindow;

/// What a window is made with and of; the values are the home system's.
using NSWindowStyleMask = unsigned;
inline constexpr NSWindowStyleMask NSWindowStyleMaskTitled = 1;
inline constexpr NSWindowStyleMask NSWindowStyleMaskClosable = 2;
inline constexpr NSWindowStyleMask NSWindowStyleMaskMiniaturizable = 4;
inline constexpr NSWindowStyleMask NSWindowStyleMaskResizable = 8;
inline constexpr NSWindowStyleMask NSWindowStyleMaskNonactivatingPanel = 0x80;

inline constexpr int NSNormalWindowLevel = 0;
inline constexpr int NSFloatingWindowLevel = 3;

using NSWindowCollectionBehavior = unsigned;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorCanJoinAllSpaces = 0x1;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorFullScreenAuxiliary = 0x100;

/// No maximum.
inline constexpr NSSize kUnboundedSize{std::numeric_limits<double>::max(),
                                       std::numeric_limits<double>::max()};

/// How a window stands among and looks beside the others.
struct WindowAppearance {
  int level = NSNormalWindowLevel;
  NSWindowCollectionBehavior collectionBehavior = 0;
  bool opaque = true;
  bool clearBackground = false;
  bool hasShadow = true;
  bool hidesOnDeactivate = false;
  bool movableByWindowBackground = false;
};

/// One window as the desktop has it; owned by its `NSWindow`. Main thread. What the desktop does to
/// it (focus, frame, a person's close) it tells the `NSWindow` in a later turn.
class NativeWindow {
 public:
  virtual ~NativeWindow() = default;

  virtual void orderFront() = 0;
  virtual void makeKeyAndOrderFront() = 0;
  virtual void orderOut() = 0;
  virtual bool isVisible() const = 0;

  virtual NSRect frame() const = 0;
  virtual void setFrame(const NSRect& frame, bool animate) = 0;
  virtual void setMinSize(const NSSize& size) = 0;
  virtual void setMaxSize(const NSSize& size) = 0;
  virtual void setStyleMask(NSWindowStyleMask styleMask) = 0;
  virtual void setAppearance(const WindowAppearance& appearance) = 0;
};

/// The desktop that windows live on. Main thread.
class WindowServer {
 public:
  virtual ~WindowServer() = default;

  /// A window that is not on screen yet.
  virtual std::unique_ptr<NativeWindow> makeWindow(NSWindow& window, const NSRect& contentRect,
                                                   NSWindowStyleMask styleMask) = 0;

  /// Brings the application to the front and makes it the active one.
  virtual void activateIgnoringOtherApps() = 0;
};

}  // namespace norvane
