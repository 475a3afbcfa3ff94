#pragma once

#include <optional>
#include <string>

namespace norvane {

/// The host's own settings, kept across launches; keys and texts in UTF-8. Main thread. A change is
/// on disk when its call returns; what cannot be written is logged and stays in memory.
class NSUserDefaults {
 public:
  virtual ~NSUserDefaults() = default;

  /// False when `key` is absent or holds no boolean.
  virtual bool boolForKey(const std::string& key) const = 0;
  /// Nothing when `key` is absent or holds no text.
  virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;

  /// Replaces what `key` holds, of whatever type. The value that it has already writes nothing.
  virtual void setBool(bool value, const std::string& key) = 0;
  /// As setBool.
  virtual void setString(const std::string& value, const std::string& key) = 0;
  /// Nothing happens when `key` is absent.
  virtual void removeObjectForKey(const std::string& key) = 0;
};

}  // namespace norvane
