#include "platform/session/desktop_bundle.h"

#include <system_error>
#include <utility>

#include "platform/linux/atomic_file.h"
#include "platform/linux/json.h"
#include "platform/log.h"

namespace norvane {

namespace {

/// The value of `key` in the dictionary at `path`, as `convert` has it; nothing where there is
/// none. What is wrong is logged.
template <class Convert>
auto infoValue(const std::string& path, const std::string& key, const Convert& convert)
    -> decltype(convert(std::declval<const JsonValue&>())) {
  try {
    const JsonDocument info = parseJson(textOf(readFile(path)));
    if (!info.IsObject()) throw JsonError("not an object");
    const JsonValue* value = find(info, key.c_str());
    return value ? convert(*value) : decltype(convert(*value)){};
  } catch (const std::system_error&) {
    return {};  // most bundles have none
  } catch (const JsonError& error) {
    NSLog("[Norvane] " + path + ": " + error.what());
    return {};
  }
}

}  // namespace

std::string DesktopBundle::infoPath() const { return bundlePath() + "/Contents/Info.json"; }

std::optional<std::string> DesktopBundle::infoText(const std::string& key) const {
  return infoValue(infoPath(), key, [](const JsonValue& value) -> std::optional<std::string> {
    if (!value.IsString()) return std::nullopt;
    return std::string(value.GetString(), value.GetStringLength());
  });
}

std::vector<std::string> DesktopBundle::infoTexts(const std::string& key) const {
  return infoValue(infoPath(), key, [&](const JsonValue& value) {
    const std::string name = "\"" + key + "\"";
    std::vector<std::string> texts;
    for (const JsonValue& text : expectArray(value, name).GetArray())
      texts.push_back(expectText(text, name));
    return texts;
  });
}

}  // namespace norvane
