#include "storage/passkey_index.h"

#include <utility>

#include "storage/app_group_snapshot.h"
#include "storage/sealed_file.h"
#include "storage/session_key_item.h"
#include "storage/storage_errors.h"

namespace norvane {
namespace {

constexpr const char* kIndexName = "passkey_index.enc";
constexpr const char* kAccount = "passkey-session-key";

void check(OSStatus status) {
  if (status == errSecSuccess) return;
  throw StorageFailure(PasskeyIndexError{PasskeyIndexError::Case::keychainStatus, status});
}

}  // namespace

std::string PasskeyIndex::indexURL() { return AppGroupSnapshot::supportFileURL(kIndexName); }

void PasskeyIndex::write(std::span<const Entry> entries,
                         const std::optional<std::string>& accessGroup) {
  Plaintext plaintext(0);
  JsonArrayWriter json(plaintext.text());
  for (const Entry& entry : entries) json.object(entry);
  json.finish();

  writeSealedFile(
      std::move(plaintext), [&](auto key) { saveKey(key, accessGroup); }, indexURL);
}

void PasskeyIndex::clear(const std::optional<std::string>& accessGroup) noexcept {
  removeSealedFile([&] { deleteKey(accessGroup); },
                   [] { AppGroupSnapshot::deleteSupportFile(kIndexName); });
}

void PasskeyIndex::saveKey(std::span<const std::uint8_t> key,
                           const std::optional<std::string>& accessGroup) {
  check(saveSessionKeyItem(key, kAccount, accessGroup));
}

void PasskeyIndex::deleteKey(const std::optional<std::string>& accessGroup) {
  check(deleteSessionKeyItem(kAccount, accessGroup));
}

}  // namespace norvane
