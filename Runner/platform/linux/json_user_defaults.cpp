#include "platform/linux/json_user_defaults.h"

#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

#include "platform/linux/atomic_file.h"
#include "platform/linux/json.h"
#include "platform/log.h"

namespace norvane {

JsonUserDefaults::JsonUserDefaults(std::string path) : path_(std::move(path)) {
  try {
    load();
  } catch (const JsonError& error) {
    std::filesystem::rename(path_, path_ + ".damaged");
    NSLog("[Norvane] user defaults set aside as " + path_ + ".damaged: " + error.what());
  }
}

void JsonUserDefaults::load() {
  if (!std::filesystem::exists(path_)) return;
  const JsonDocument document = parseJson(textOf(readFile(path_)));
  for (const auto& [key, value] : expectObject(document, "the file").GetObject()) {
    // Values of other types are nobody's: they read as absent, and go with the next change.
    if (value.IsBool()) values_[std::string(textOf(key))] = value.GetBool();
    if (value.IsString()) values_[std::string(textOf(key))] = std::string(textOf(value));
  }
}

bool JsonUserDefaults::boolForKey(const std::string& key) const {
  const auto found = values_.find(key);
  const auto* value = found == values_.end() ? nullptr : std::get_if<bool>(&found->second);
  return value && *value;
}

std::optional<std::string> JsonUserDefaults::stringForKey(const std::string& key) const {
  const auto found = values_.find(key);
  const auto* value = found == values_.end() ? nullptr : std::get_if<std::string>(&found->second);
  return value ? std::optional(*value) : std::nullopt;
}

void JsonUserDefaults::setBool(bool value, const std::string& key) { set(key, value); }

void JsonUserDefaults::setString(const std::string& value, const std::string& key) {
  set(key, value);
}

void JsonUserDefaults::removeObjectForKey(const std::string& key) {
  if (values_.erase(key) > 0) save();
}

void JsonUserDefaults::set(const std::string& key, Value value) {
  const auto [entry, added] = values_.try_emplace(key, value);
  if (!added && entry->second == value) return;
  entry->second = std::move(value);
  save();
}

void JsonUserDefaults::save() const {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  for (const auto& [key, value] : values_) {
    writeText(writer, key);
    if (const auto* text = std::get_if<std::string>(&value)) {
      writeText(writer, *text);
    } else {
      writer.Bool(std::get<bool>(value));
    }
  }
  writer.EndObject();
  try {
    writeFileAtomically(path_, std::as_bytes(std::span(buffer.GetString(), buffer.GetSize())));
  } catch (const std::system_error& error) {
    NSLog(std::string("[Norvane] user defaults not saved: ") + error.what());
  }
}

}  // namespace norvane
