#include "platform/session/desktop_entries.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

namespace norvane {
namespace {

using Entry = GObjectPtr<GDesktopAppInfo>;

Entry shared(const Entry& entry) {
  return Entry(entry ? G_DESKTOP_APP_INFO(g_object_ref(entry.get())) : nullptr);
}

std::string lowerCase(const std::string& text) {
  const GTextPtr lower(g_ascii_strdown(text.c_str(), -1));
  return lower.get();
}

/// The name under which a window of the entry may be found by its executable; empty where it may
/// not: a program in a terminal has no window of its own, a hidden entry is there for files.
std::string executableName(GDesktopAppInfo* entry) {
  const char* executable = g_app_info_get_executable(G_APP_INFO(entry));
  if (!executable || g_desktop_app_info_get_nodisplay(entry) ||
      g_desktop_app_info_get_boolean(entry, G_KEY_FILE_DESKTOP_KEY_TERMINAL)) {
    return {};
  }
  return std::filesystem::path(executable).filename();
}

bool starts(GDesktopAppInfo* entry, const std::string& executable) {
  const GTextPtr found(g_find_program_in_path(g_app_info_get_executable(G_APP_INFO(entry))));
  if (!found) return false;
  std::error_code unreadable;
  return std::filesystem::canonical(found.get(), unreadable) == executable;
}

}  // namespace

DesktopEntries::DesktopEntries() : monitor_(g_app_info_monitor_get()) {
  const auto changed =
      +[](GAppInfoMonitor*, gpointer self) { static_cast<DesktopEntries*>(self)->loaded_ = false; };
  g_signal_connect(monitor_.get(), "changed", G_CALLBACK(changed), this);
}

DesktopEntries::~DesktopEntries() { g_signal_handlers_disconnect_by_data(monitor_.get(), this); }

void DesktopEntries::load() {
  if (loaded_) return;
  loaded_ = true;
  byWindowClass_.clear();
  byExecutable_.clear();
  GList* const entries = g_app_info_get_all();
  for (GList* item = entries; item; item = item->next) {
    const Entry entry(G_DESKTOP_APP_INFO(item->data));
    if (const char* windowClass = g_desktop_app_info_get_startup_wm_class(entry.get())) {
      byWindowClass_.try_emplace(windowClass, shared(entry));
    }
    if (const std::string name = executableName(entry.get()); !name.empty()) {
      const auto [found, isFirst] = byExecutable_.try_emplace(name, shared(entry));
      if (!isFirst) found->second.reset();
    }
  }
  g_list_free(entries);
}

GObjectPtr<GDesktopAppInfo> DesktopEntries::withId(const std::string& id) const {
  return Entry(id.empty() ? nullptr : g_desktop_app_info_new((id + ".desktop").c_str()));
}

GObjectPtr<GDesktopAppInfo> DesktopEntries::find(const Traces& traces) {
  load();
  if (Entry entry = withId(traces.applicationId)) return entry;
  // The instance first: by it a browser tells its web applications apart.
  for (const auto& name : {traces.instance, traces.windowClass}) {
    const auto found = byWindowClass_.find(name);
    if (found != byWindowClass_.end()) return shared(found->second);
  }
  for (const auto& id : {traces.windowClass, lowerCase(traces.windowClass), traces.instance}) {
    if (Entry entry = withId(id)) return entry;
  }
  const auto found = byExecutable_.find(std::filesystem::path(traces.executable).filename());
  if (found == byExecutable_.end() || !found->second) return nullptr;
  return starts(found->second.get(), traces.executable) ? shared(found->second) : nullptr;
}

}  // namespace norvane
