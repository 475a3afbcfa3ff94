#pragma once

#include <map>
#include <string>
#include <variant>

#include "platform/ns_user_defaults.h"

namespace norvane {

/// User defaults in one JSON file, which is replaced whole at every change.
class JsonUserDefaults : public NSUserDefaults {
 public:
  using Value = std::variant<bool, std::string>;

  /// Reads `path`; a file that does not exist is empty, one that cannot be understood is renamed to
  /// `path` + ".damaged", with a log record.
  explicit JsonUserDefaults(std::string path);

  bool boolForKey(const std::string& key) const override;
  std::optional<std::string> stringForKey(const std::string& key) const override;
  void setBool(bool value, const std::string& key) override;
  void setString(const std::string& value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;

  const std::map<std::string, Value>& values() const { return values_; }

 private:
  void load();
  void set(const std::string& key, Value value);
  void save() const;

  std::string path_;
  std::map<std::string, Value> values_;
};

}  // namespace norvane
