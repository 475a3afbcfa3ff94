#pragma once

#include <memory>

#include "platform/gtk/gtk_desktop.h"
#include "platform/window_server.h"

struct _GdkEventButton;
struct _GdkEventConfigure;
struct _GtkWidget;
struct _cairo;

namespace norvane {

/// One window of GTK's. Its frame is a model: what was asked for, within the limits, at once; what
/// the window manager makes of it follows when it has settled. Frames have their decoration, which
/// X knows only while a window is mapped, so the last one is remembered. Main thread.
class DesktopWindow : public NativeWindow {
 public:
  DesktopWindow(GtkDesktop& desktop, NSWindow& owner, const NSRect& frame,
                NSWindowStyleMask styleMask);
  ~DesktopWindow() override;

  void orderFront() override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;
  bool isVisible() const override { return visible_; }
  NSRect frame() const override { return frame_; }
  /// No window manager of X animates: `animate` changes nothing.
  void setFrame(const NSRect& frame, bool animate) override;
  void setMinSize(const NSSize& size) override;
  void setMaxSize(const NSSize& size) override;
  void setStyleMask(NSWindowStyleMask styleMask) override;
  void setAppearance(const WindowAppearance& appearance) override;

  NSWindow& owner() const { return owner_; }
  /// Whether `window`, of X's, is this one or lies in it.
  bool contains(unsigned long window) const;
  /// Keeps the keyboard where it is when the window comes on screen.
  void showWithoutKeyboard();

 private:
  struct Widgets;
  struct Decoration {
    int left = 0;
    int top = 0;
    int width = 0;  ///< left and right
    int height = 0;
    bool operator==(const Decoration&) const = default;
  };

  bool isPanel() const;
  void show(bool takesKeyboard);
  void mapped();
  void frameMayHaveChanged();
  void takeSettledFrame();
  bool learnDecoration();
  void applyFrame();
  void applyLimits();
  NSRect clamped(NSRect frame) const;

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
  bool wantsKeyboard_ = false;  ///< as soon as it is mapped
  unsigned changes_ = 0;        ///< of the frame, to tell when it has settled
};

}  // namespace norvane
