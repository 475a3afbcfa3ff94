#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/dispatch.h"
#include "platform/ns_application.h"
#include "platform/ns_process_info.h"
#include "platform/screens.h"
#include "platform/window_server.h"
#include "platform/x11/event_time.h"
#include "platform/x11/x11_event_filter.h"

namespace norvane {

class DesktopWindow;
class WindowUi;

/// The windows and the screens of an X11 desktop, by way of GTK. Main thread.
class GtkDesktop : public WindowServer, public Screens, public NSProcessInfo {
 public:
  GtkDesktop(NSApplication& application, Dispatch& dispatch, EventTime& eventTime, WindowUi& ui);
  ~GtkDesktop() override;

  // The desktop's side

  /// Loads the application's main interface, shows its main window and tells its delegate that
  /// launch has finished. A window that is not to take the keyboard leaves it where it is.
  void launch(const MainInterface& mainInterface, bool takesKeyboard);

  // The host's side

  std::unique_ptr<NativeWindow> makeWindow(NSWindow& window, const NSRect& contentRect,
                                           NSWindowStyleMask styleMask) override;
  void activateIgnoringOtherApps() override;
  std::optional<NSRect> mainScreenVisibleFrame() const override;
  std::optional<std::string> environment(const std::string& name) const override;
  NSOperatingSystemVersion operatingSystemVersion() const override;

 private:
  friend class DesktopWindow;

  void updateKeyWindow();
  void personCloses(const std::weak_ptr<NSWindow>& window);

  NSApplication& application_;
  Dispatch& dispatch_;
  EventTime& eventTime_;
  WindowUi& ui_;
  std::vector<DesktopWindow*> windows_;
  DesktopWindow* wantsKeyboard_ = nullptr;  ///< as soon as it is mapped; the newest wish
  X11EventFilter activeWindowWatch_;
};

}  // namespace norvane
