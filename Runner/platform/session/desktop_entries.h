#pragma once

#include <map>
#include <string>

#include "platform/linux/glib_handles.h"

struct _GAppInfoMonitor;
struct _GDesktopAppInfo;

namespace norvane {

/// The installed applications, as their desktop entries describe them. Main thread.
class DesktopEntries {
 public:
  /// What an application's window shows of it; empty where it does not.
  struct Traces {
    std::string applicationId;  ///< the toolkit's
    std::string instance;       ///< of WM_CLASS
    std::string windowClass;    ///< of WM_CLASS
    std::string executable;     ///< absolute
  };

  DesktopEntries();
  DesktopEntries(const DesktopEntries&) = delete;
  ~DesktopEntries();

  /// The entry that names these traces most expressly; null when none does.
  GObjectPtr<_GDesktopAppInfo> find(const Traces& traces);
  GObjectPtr<_GDesktopAppInfo> withId(const std::string& id) const;
  /// Reads all entries unless they were read since the last change.
  void load();

 private:
  using Index = std::map<std::string, GObjectPtr<_GDesktopAppInfo>>;

  GObjectPtr<_GAppInfoMonitor> monitor_;
  bool loaded_ = false;
  Index byWindowClass_;
  Index byExecutable_;  ///< the file's name; null where several entries start it
};

}  // namespace norvane
