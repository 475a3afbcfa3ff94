#pragma once

#include "platform/crypto.h"

namespace norvane {

/// OpenSSL 3. The library is loaded at the first call: it alone costs more than the rest of a
/// start.
class OpenSslCrypto : public Crypto {
 public:
  std::int32_t SecRandomCopyBytes(std::span<std::uint8_t> bytes) override;
  bool sealAESGCM(std::span<const std::uint8_t, 32> key, std::span<std::uint8_t> box) override;
};

}  // namespace norvane
