#include "support/open_envelope.h"

#include <memory>

#include <openssl/evp.h>

namespace norvane {

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

}  // namespace norvane
