#include <fstream>

#include <nlohmann/json.hpp>

#include "support/auto_fill_test.h"

namespace norvane {

using nlohmann::json;

Extension::Extension(const std::filesystem::path& dataDirectory)
    : root_(dataDirectory),
      support_(dataDirectory / "Group Containers" / "group.cn.kestrio.norvane" / "Library" /
               "Application Support"),
      keychain_(dataDirectory.string()) {}

std::optional<Bytes> Extension::key(const Sealed& sealed) const {
  const KeychainQuery query{"cn.kestrio.norvane.autofill.snapshot", sealed.account,
                            "TEAM123456.cn.kestrio.norvane"};
  auto items = keychain_.find(&query);
  return items.empty() ? std::nullopt : std::optional(std::move(items.front().value));
}

std::optional<std::string> Extension::file(const Sealed& sealed) const {
  std::ifstream stream(pathOf(sealed), std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::string Extension::read(const Sealed& sealed) const {
  const auto found = key(sealed);
  const auto envelope = file(sealed);
  if (!envelope) return found ? "only a key" : "none";
  if (!found) return "only a file";
  const auto text = openEnvelope(*found, *envelope);
  return text ? json::parse(*text).dump() : "misfit";
}

std::vector<std::string> Extension::leftovers() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
    const std::string name = entry.path().filename().string();
    if (name.find(".tmp-") != std::string::npos) names.push_back(name);
  }
  return names;
}

}  // namespace norvane
