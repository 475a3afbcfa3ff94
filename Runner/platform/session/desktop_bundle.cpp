#include "platform/session/desktop_bundle.h"

#include <system_error>

#include "platform/linux/atomic_file.h"
#include "platform/linux/json.h"
#include "platform/log.h"

namespace norvane {

std::optional<std::string> DesktopBundle::infoText(const std::string& key) const {
  const std::string path = bundlePath() + "/Contents/Info.json";
  try {
    const JsonDocument info = parseJson(textOf(readFile(path)));
    if (!info.IsObject()) throw JsonError("not an object");
    const auto found = info.FindMember(key.c_str());
    if (found == info.MemberEnd() || !found->value.IsString()) return std::nullopt;
    return std::string(found->value.GetString(), found->value.GetStringLength());
  } catch (const std::system_error&) {
    return std::nullopt;  // most bundles have none
  } catch (const JsonError& error) {
    NSLog("[Norvane] " + path + ": " + error.what());
    return std::nullopt;
  }
}

}  // namespace norvane
