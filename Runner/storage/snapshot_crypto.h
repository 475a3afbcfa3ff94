#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/secure_memory.h"

namespace norvane {

/// The key of one sealing: 32 random bytes, wiped when it goes.
class SessionKey {
 public:
  SessionKey() = default;
  SessionKey(const SessionKey&) = delete;
  SessionKey& operator=(const SessionKey&) = delete;
  ~SessionKey() { secureWipe(bytes.data(), bytes.size()); }

  std::array<std::uint8_t, 32> bytes{};
};

/// A payload to be sealed. The text stands where the sealed box will have its ciphertext, so that
/// it is sealed in place and no second copy of it ever exists.
class Plaintext {
 public:
  /// Sets memory aside for a text of `capacity` bytes; it may grow beyond.
  explicit Plaintext(std::size_t capacity);

  /// Where the text is appended.
  SecureBuffer& text() { return box_; }

 private:
  friend struct SnapshotCrypto;
  SecureBuffer box_;
};

/// Makes session keys and seals payloads for the AutoFill extension. Any thread.
struct SnapshotCrypto {
  /// Draws a new key. Raises SnapshotCryptoError::sealFailed when the random source fails.
  static void generateSessionKey(SessionKey& key);

  /// The sealed envelope: 12 bytes of nonce, the ciphertext, 16 bytes of tag; AES-256-GCM without
  /// associated data. Raises SnapshotCryptoError::invalidKeyLength or sealFailed.
  static SecureBuffer encrypt(Plaintext plaintext, std::span<const std::uint8_t> key);
};

}  // namespace norvane
