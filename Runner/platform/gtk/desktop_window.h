#pragma once

#include <memory>

#include "platform/gtk/gtk_desktop.h"
#include "platform/window_server.h"

struct _GdkWindow;
struct _GtkWidget;

namespace norvane {

/// One window of GTK's. Its frame is a model: what was asked for, at once; what the window manager
/// makes of it follows when it has settled. Frames have their decoration, which X knows only while
/// a window is mapped, so the last one is remembered. Main thread.
class DesktopWindow : public NativeWindow {
 public:
  DesktopWindow(GtkDesktop& desktop, NSWindow& owner, const NSRect& frame,
                NSWindowStyleMask styleMask);
  ~DesktopWindow() override;

  void orderFront() override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;
  /// An iconified window is not.
  bool isVisible() const override;
  void showView(FlutterViewController& controller) override;
  NSRect frame() const override { return frame_; }
  /// No window manager of X animates: `animate` changes nothing.
  void setFrame(const NSRect& frame, bool animate) override;
  void restoreFrame(const NSRect& frame) override;
  void setMinSize(const NSSize& size) override;
  void setMaxSize(const NSSize& size) override;
  void setStyleMask(NSWindowStyleMask styleMask) override;
  void setAppearance(const WindowAppearance& appearance) override;

  NSWindow& owner() const { return owner_; }
  /// Whether `window`, of the toolkit's, is this one or lies in it. Null is in none.
  bool contains(_GdkWindow* window) const;
  /// A screen was attached, taken away or arranged in another way.
  void screensChanged();

 private:
  struct Signals;
  struct Decoration {
    int width = 0;  ///< left and right together
    int height = 0;
    bool operator==(const Decoration&) const = default;
  };

  bool isPanel() const;
  bool isMapped() const;
  bool isZoomed() const;
  void mapped();
  void frameMayHaveChanged();
  void takeFrameLater();
  void takeSettledFrame();
  void learnDecoration();
  void comeIntoSight();
  void applyFrame();
  void applyLimits();

  GtkDesktop& desktop_;
  NSWindow& owner_;
  _GtkWidget* window_;
  NSRect frame_;
  NSSize minSize_;
  NSSize maxSize_ = kUnboundedSize;
  NSWindowStyleMask styleMask_;
  WindowAppearance appearance_;
  Decoration decoration_;
  bool visible_ = false;
  unsigned state_ = 0;       ///< GDK's bits
  bool leavesZoom_ = false;  ///< asked to, for a frame that has yet to settle
  bool settles_ = false;     ///< a frame that was asked for has yet to
  bool screensChanged_ = false;
  unsigned changes_ = 0;  ///< of the frame, to tell when it has settled
};

}  // namespace norvane
