#include "storage/snapshot_crypto.h"

#include <utility>

#include "platform/crypto.h"
#include "platform/platform.h"
#include "storage/storage_errors.h"

namespace norvane {

Plaintext::Plaintext(std::size_t capacity) {
  box_.reserve(kAesGcmNonceSize + capacity + kAesGcmTagSize);
  box_.advance(kAesGcmNonceSize);
}

void SnapshotCrypto::generateSessionKey(SessionKey& key) {
  if (platform().crypto.SecRandomCopyBytes(key.bytes) != 0) {
    throw StorageFailure(SnapshotCryptoError::sealFailed);
  }
}

SecureBuffer SnapshotCrypto::encrypt(Plaintext plaintext, std::span<const std::uint8_t> key) {
  constexpr std::size_t kKeySize = 32;
  if (key.size() != kKeySize) throw StorageFailure(SnapshotCryptoError::invalidKeyLength);
  SecureBuffer box = std::move(plaintext.box_);
  box.space(kAesGcmTagSize);
  box.advance(kAesGcmTagSize);
  if (!platform().crypto.sealAESGCM(key.first<kKeySize>(), {box.data(), box.size()})) {
    throw StorageFailure(SnapshotCryptoError::sealFailed);
  }
  box.declassify();
  return box;
}

}  // namespace norvane
