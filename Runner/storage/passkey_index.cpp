#include "storage/passkey_index.h"

#include <utility>

#include "platform/ns_file_manager.h"
#include "platform/platform.h"
#include "storage/app_group_snapshot.h"
#include "storage/session_key_item.h"
#include "storage/snapshot_crypto.h"
#include "storage/storage_errors.h"

namespace norvane {
namespace {

constexpr const char* kAccount = "passkey-session-key";

void check(OSStatus status) {
  if (status == errSecSuccess) return;
  throw StorageFailure(PasskeyIndexError{PasskeyIndexError::Case::keychainStatus, status});
}

}  // namespace

std::string PasskeyIndex::indexURL() {
  return AppGroupSnapshot::supportFileURL("passkey_index.enc");
}

void PasskeyIndex::write(std::span<const Entry> entries,
                         const std::optional<std::string>& accessGroup) {
  Plaintext plaintext(0);
  JsonArrayWriter json(plaintext.text());
  for (const Entry& entry : entries) json.object(entry);
  json.finish();

  SessionKey key;
  SnapshotCrypto::generateSessionKey(key);
  const SecureBuffer envelope = SnapshotCrypto::encrypt(std::move(plaintext), key.bytes);
  saveKey(key.bytes, accessGroup);
  platform().fileManager.writeAtomically({envelope.data(), envelope.size()}, indexURL());
}

void PasskeyIndex::clear(const std::optional<std::string>& accessGroup) noexcept {
  try {
    deleteKey(accessGroup);
  } catch (...) {
    // The file goes all the same.
  }
  try {
    const std::string path = indexURL();
    if (platform().fileManager.fileExistsAtPath(path)) platform().fileManager.removeItem(path);
  } catch (...) {
    // What cannot be removed stays; the extension has no key for it.
  }
}

void PasskeyIndex::saveKey(std::span<const std::uint8_t> key,
                           const std::optional<std::string>& accessGroup) {
  check(saveSessionKeyItem(key, kAccount, accessGroup));
}

void PasskeyIndex::deleteKey(const std::optional<std::string>& accessGroup) {
  check(deleteSessionKeyItem(kAccount, accessGroup));
}

}  // namespace norvane
