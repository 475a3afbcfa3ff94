#include "storage/sealed_file.h"

#include <utility>

#include "platform/ns_file_manager.h"
#include "platform/platform.h"

namespace norvane {

void writeSealedFile(Plaintext plaintext,
                     const std::function<void(std::span<const std::uint8_t> key)>& saveKey,
                     const std::function<std::string()>& url) {
  SessionKey key;
  SnapshotCrypto::generateSessionKey(key);
  const SecureBuffer envelope = SnapshotCrypto::encrypt(std::move(plaintext), key.bytes);
  saveKey(key.bytes);
  platform().fileManager.writeAtomically({envelope.data(), envelope.size()}, url());
}

void removeSealedFile(const std::function<void()>& deleteKey,
                      const std::function<void()>& deleteFile) noexcept {
  try {
    deleteKey();
  } catch (...) {
    // The file goes all the same.
  }
  try {
    deleteFile();
  } catch (...) {
    // What cannot be removed stays; the extension has no key for it.
  }
}

}  // namespace norvane
