#include "platform/session/autostart_entry.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include <glib.h>

#include "base/utf8.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;
constexpr const char* kExec = G_KEY_FILE_DESKTOP_KEY_EXEC;
constexpr const char* kHidden = G_KEY_FILE_DESKTOP_KEY_HIDDEN;
// What the settings programs of the desktops write to switch an entry off and on.
constexpr const char* kEnabled = "X-GNOME-Autostart-enabled";

GKeyFilePtr load(const std::string& path, GError** error) {
  GKeyFilePtr entry(g_key_file_new());
  const auto flags =
      static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  if (!g_key_file_load_from_file(entry.get(), path.c_str(), flags, error)) return nullptr;
  return entry;
}

/// Whether the entry has a boolean that is `value`.
bool says(GKeyFile* entry, const char* key, bool value) {
  GError* absent = nullptr;
  const bool found = g_key_file_get_boolean(entry, kGroup, key, &absent);
  return !GErrorPtr(absent) && found == value;
}

/// The path as an argument of an Exec line; nothing when it cannot be one. Sessions disagree about
/// a percent sign that is meant literally, and an equals sign would make it a variable.
std::optional<std::string> quoted(const std::string& path) {
  if (!g_utf8_validate_len(path.data(), path.size(), nullptr)) return std::nullopt;
  std::string argument = "\"";
  for (const char letter : path) {
    const auto byte = static_cast<unsigned char>(letter);
    if (letter == '%' || letter == '=' || byte < 0x20 || byte == 0x7F) return std::nullopt;
    if (std::string_view("\"`$\\").find(letter) != std::string_view::npos) argument += '\\';
    argument += letter;
  }
  return argument + '"';
}

ServiceError failure(const std::system_error& error) {
  return {.localizedDescription = utf8Of(error.code().message()), .description = error.what()};
}

}  // namespace

AutostartEntry::AutostartEntry(std::string executable)
    : executable_(std::move(executable)),
      path_(std::string(g_get_user_config_dir()) + "/autostart/cn.kestrio.norvane.desktop") {}

SMAppServiceStatus AutostartEntry::status() const {
  GError* error = nullptr;
  const GKeyFilePtr entry = load(path_, &error);
  if (!entry) {
    return g_error_matches(GErrorPtr(error).get(), G_FILE_ERROR, G_FILE_ERROR_NOENT)
               ? SMAppServiceStatus::notRegistered
               : SMAppServiceStatus::notFound;
  }
  if (says(entry.get(), kHidden, true)) return SMAppServiceStatus::notRegistered;
  const GTextPtr command(g_key_file_get_string(entry.get(), kGroup, kExec, nullptr));
  if (!command || !*command) return SMAppServiceStatus::notFound;
  return says(entry.get(), kEnabled, false) ? SMAppServiceStatus::requiresApproval
                                            : SMAppServiceStatus::enabled;
}

std::optional<ServiceError> AutostartEntry::registerService() {
  const auto program = quoted(executable_);
  if (!program) {
    const std::string reason = "the application's path has a character that no login item can have";
    return ServiceError{.localizedDescription = reason,
                        .description = reason + " (%, =, a control character or not UTF-8)"};
  }
  GKeyFilePtr entry = load(path_, nullptr);
  if (!entry) entry.reset(g_key_file_new());
  g_key_file_set_string(entry.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_TYPE, "Application");
  g_key_file_set_string(entry.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_NAME, "Norvane");
  g_key_file_set_string(entry.get(), kGroup, kExec, (*program + " --at-login").c_str());
  g_key_file_set_boolean(entry.get(), kGroup, kEnabled, TRUE);
  g_key_file_remove_key(entry.get(), kGroup, kHidden, nullptr);
  gsize size = 0;
  const GTextPtr content(g_key_file_to_data(entry.get(), &size, nullptr));
  try {
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
    writeFileAtomically(path_, std::as_bytes(std::span(content.get(), size)));
  } catch (const std::system_error& error) {
    return failure(error);
  }
  return std::nullopt;
}

std::optional<ServiceError> AutostartEntry::unregisterService() {
  try {
    std::filesystem::remove(path_);
  } catch (const std::system_error& error) {
    return failure(error);
  }
  return std::nullopt;
}

}  // namespace norvane
