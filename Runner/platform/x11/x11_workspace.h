#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ns_workspace.h"
#include "platform/session/desktop_entries.h"
#include "platform/x11/x11_properties.h"

namespace norvane {

/// The applications whose windows are on the display. An application's identifier is the id of its
/// desktop entry, or, for the few that the host asks for, the one that it has on the home system;
/// without an entry it has a name only. Works without a window manager too. Main thread.
class X11Workspace : public NSWorkspace {
 public:
  explicit X11Workspace(std::optional<std::string> ownBundleIdentifier)
      : ownBundleIdentifier_(std::move(ownBundleIdentifier)) {}

  /// Loads what the first look at the application in front and its icon would have to wait for.
  void warmUp();

  /// Each application once, and programs without a window that the host asks for.
  std::vector<NSRunningApplication> runningApplications() const override;
  /// A panel of this application's is never in front: the application below it is.
  std::optional<NSRunningApplication> frontmostApplication() const override;

 private:
  NSRunningApplication ownApplication() const;
  std::optional<NSRunningApplication> applicationOf(XWindow window) const;

  std::optional<std::string> ownBundleIdentifier_;
  mutable DesktopEntries entries_;
};

}  // namespace norvane
