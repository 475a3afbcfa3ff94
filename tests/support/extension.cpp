#include <fstream>

#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include "support/auto_fill_test.h"

namespace norvane {

using nlohmann::json;

std::optional<std::string> openEnvelope(std::span<const std::uint8_t> key,
                                        std::string_view envelope) {
  constexpr std::size_t kNonce = 12;
  constexpr std::size_t kTag = 16;
  if (key.size() != 32 || envelope.size() < kNonce + kTag) return std::nullopt;
  const auto bytes = [&](std::size_t at) {
    return reinterpret_cast<const unsigned char*>(envelope.data()) + at;
  };
  std::string tag(envelope.substr(envelope.size() - kTag));
  std::string text(envelope.size() - kNonce - kTag, '\0');
  auto* out = reinterpret_cast<unsigned char*>(text.data());
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
      EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  int size = 0;
  const bool opened =
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), bytes(0)) == 1 &&
      (text.empty() || EVP_DecryptUpdate(context.get(), out, &size, bytes(kNonce),
                                         static_cast<int>(text.size())) == 1) &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, kTag, tag.data()) == 1 &&
      EVP_DecryptFinal_ex(context.get(), out, &size) == 1;
  return opened ? std::optional(text) : std::nullopt;
}

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
