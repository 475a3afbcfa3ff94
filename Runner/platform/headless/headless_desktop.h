#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/dispatch.h"
#include "platform/headless/live_profile.h"
#include "platform/ns_application.h"
#include "platform/ns_bundle.h"
#include "platform/ns_process_info.h"
#include "platform/ns_workspace.h"
#include "platform/screens.h"
#include "platform/window_server.h"

namespace norvane {

class HeadlessWindow;

/// A desktop without a display. The host sees the interfaces; the control side stands for the
/// person and the other applications. As on a real desktop, what happens to a window is told to the
/// host in a later turn. Main thread.
class HeadlessDesktop : public WindowServer,
                        public Screens,
                        public NSWorkspace,
                        public NSProcessInfo {
 public:
  HeadlessDesktop(LiveProfile& profile, Dispatch& dispatch, NSApplication& application,
                  const NSBundle& bundle);
  ~HeadlessDesktop() override;

  // The control side

  /// Loads the application's main interface and tells its delegate that launch has finished.
  void launch(MainInterface mainInterface);

  void setProfile(const Profile& profile);

  /// The person closes the main window. False when it is not on screen.
  bool closeMainWindow();
  /// The person moves or resizes the main window, within its limits. False when it is not on
  /// screen.
  bool resizeMainWindow(NSRect frame);
  /// Another application comes to the front. False when no such application runs.
  bool activate(const std::string& bundleIdentifier);
  void launchApplication(const Profile::Application& application);
  /// Another application ends. False when no such application runs.
  bool terminateApplication(const std::string& bundleIdentifier);

  bool isActive() const { return active_; }
  /// The bundle identifier of the application in front, where there is one that has one.
  std::optional<std::string> frontApplication() const;
  HeadlessWindow& nativeWindow(const NSWindow& window) const;

  // The host's side

  std::unique_ptr<NativeWindow> makeWindow(NSWindow& window, const NSRect& contentRect,
                                           NSWindowStyleMask styleMask) override;
  void activateIgnoringOtherApps() override;
  std::optional<NSRect> mainScreenVisibleFrame() const override;
  std::vector<NSRunningApplication> runningApplications() const override;
  std::optional<NSRunningApplication> frontmostApplication() const override;
  std::optional<std::string> environment(const std::string& name) const override;
  NSOperatingSystemVersion operatingSystemVersion() const override;

 private:
  friend class HeadlessWindow;

  void makeMainWindowIfAsked();
  void deactivate();
  void giveKeyBack();
  NSRunningApplication ownApplication() const;

  LiveProfile& profile_;
  Dispatch& dispatch_;
  NSApplication& application_;
  const NSBundle& bundle_;
  MainInterface mainInterface_;
  std::weak_ptr<NSWindow> mainWindow_;
  bool mainWindowMade_ = false;
  bool active_ = false;
  std::vector<HeadlessWindow*> windows_;
};

/// A window of the headless desktop. It has no decoration: its frame is its content rectangle.
class HeadlessWindow : public NativeWindow {
 public:
  HeadlessWindow(HeadlessDesktop& desktop, NSWindow& owner, const NSRect& frame,
                 NSWindowStyleMask styleMask);
  ~HeadlessWindow() override;

  void orderFront() override { visible_ = true; }
  void makeKeyAndOrderFront() override;
  void orderOut() override;
  bool isVisible() const override { return visible_; }
  NSRect frame() const override { return frame_; }
  void setFrame(const NSRect& frame, bool animate) override;
  void restoreFrame(const NSRect& frame) override { frame_ = frame; }
  void setMinSize(const NSSize& size) override { minSize_ = size; }
  void setMaxSize(const NSSize& size) override { maxSize_ = size; }
  void setStyleMask(NSWindowStyleMask styleMask) override { styleMask_ = styleMask; }
  void setAppearance(const WindowAppearance& appearance) override { appearance_ = appearance; }

  NSWindow& owner() const { return owner_; }
  NSSize minSize() const { return minSize_; }
  NSSize maxSize() const { return maxSize_; }
  NSWindowStyleMask styleMask() const { return styleMask_; }
  int level() const { return appearance_.level; }

 private:
  HeadlessDesktop& desktop_;
  NSWindow& owner_;
  NSRect frame_;
  NSSize minSize_;
  NSSize maxSize_ = kUnboundedSize;
  NSWindowStyleMask styleMask_;
  WindowAppearance appearance_;
  bool visible_ = false;
};

}  // namespace norvane
