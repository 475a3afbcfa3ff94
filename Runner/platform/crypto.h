#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace norvane {

inline constexpr std::size_t kAesGcmNonceSize = 12;
inline constexpr std::size_t kAesGcmTagSize = 16;

/// Randomness and AES-GCM. Any thread.
class Crypto {
 public:
  virtual ~Crypto() = default;

  /// Fills `bytes` from the system's cryptographic random source; 0 on success. Any other status:
  /// they hold nothing of use.
  virtual std::int32_t SecRandomCopyBytes(std::span<std::uint8_t> bytes) = 0;

  /// Seals in place with AES-256-GCM, without associated data. `box` holds the plaintext, which may
  /// be empty, between room for the nonce in front and for the tag behind, both of which it writes;
  /// the nonce is drawn from the random source. False when it fails; `box` then holds nothing of
  /// use, and perhaps still the plaintext. Keeps no copy of the key.
  virtual bool sealAESGCM(std::span<const std::uint8_t, 32> key, std::span<std::uint8_t> box) = 0;
};

}  // namespace norvane
