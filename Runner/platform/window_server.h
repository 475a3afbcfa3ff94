#pragma once

#include <limits>
#include <memory>

#include "platform/geometry.h"

namespace norvane {

class FlutterViewController;
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

/// One window as the desktop has it; owned by its `NSWindow`, and gone with it. Main thread.
/// No call fails, and each may be made again: what holds already stays. No call tells the
/// `NSWindow` anything before it returns: what the desktop does (focus, frame, a person's close)
/// comes in a later turn. Sizes and frames are in points, with the decoration.
class NativeWindow {
 public:
  virtual ~NativeWindow() = default;

  /// Shows the window, where `frame()` says. The keyboard stays where it is.
  virtual void orderFront() = 0;
  /// Shows the window, above the others, and asks for the keyboard; of several windows that ask,
  /// the last gets it. The desktop may refuse or be slow, and nothing is told of it.
  virtual void makeKeyAndOrderFront() = 0;
  /// Takes the window off screen; its frame is kept for the next showing. One that had the keyboard
  /// is told of its loss.
  virtual void orderOut() = 0;
  /// Whether it was shown and neither taken off screen nor iconified since; covered counts as
  /// shown.
  virtual bool isVisible() const = 0;

  /// Shows the view's UI in the window, in place of what it shows; the engine may not run yet. The
  /// window's owner keeps `controller` for as long.
  virtual void showView(FlutterViewController& controller) = 0;

  /// What was last set, at once, until the person or the desktop makes another of it.
  virtual NSRect frame() const = 0;
  /// Sets the frame, shown or not. The limits bind the person, not this. A window that is maximised
  /// or fills the screen leaves that state first; where the person would need it, a title bar is
  /// kept below the visible area's top, and a panel inside that area, cut where it is larger.
  /// `animate` where the desktop can.
  virtual void setFrame(const NSRect& frame, bool animate) = 0;
  /// Sets a frame that was kept, maybe on another screen: a desktop with real screens makes it end
  /// inside what is visible.
  virtual void restoreFrame(const NSRect& frame) = 0;
  /// The least that the person may resize the window to. The frame that it has stays.
  virtual void setMinSize(const NSSize& size) = 0;
  /// The most; `kUnboundedSize` for no limit. The frame that it has stays.
  virtual void setMaxSize(const NSSize& size) = 0;
  /// Whether it has a title bar and may be resized. Whether it is a panel was settled when it was
  /// made.
  virtual void setStyleMask(NSWindowStyleMask styleMask) = 0;
  /// Replaces the whole appearance. Takes effect at the next showing, where the desktop needs that.
  virtual void setAppearance(const WindowAppearance& appearance) = 0;
};

/// The desktop that windows live on. Main thread.
class WindowServer {
 public:
  virtual ~WindowServer() = default;

  /// A window that is not on screen yet, with `contentRect` for its frame; never null, and gone
  /// before the desktop. `window` is only being made: it is kept, and not called before this
  /// returns.
  virtual std::unique_ptr<NativeWindow> makeWindow(NSWindow& window, const NSRect& contentRect,
                                                   NSWindowStyleMask styleMask) = 0;

  /// Asks for the application to come to the front and be the active one, with a visible window
  /// having the keyboard. A desktop that knows windows only brings the visible main window, and
  /// without one does nothing. May be refused, which nothing tells.
  virtual void activateIgnoringOtherApps() = 0;
};

}  // namespace norvane
