#include "storage/shared_keychain.h"

#include "storage/session_key_item.h"
#include "storage/storage_errors.h"

namespace norvane {
namespace {

constexpr const char* kAccount = "session-key";

void check(OSStatus status) {
  if (status == errSecSuccess) return;
  throw StorageFailure(SharedKeychainError{SharedKeychainError::Case::unexpectedStatus, status});
}

}  // namespace

void SharedKeychain::saveSessionKey(std::span<const std::uint8_t> key,
                                    const std::string& accessGroup) {
  check(saveSessionKeyItem(key, kAccount, accessGroup));
}

void SharedKeychain::deleteSessionKey(const std::string& accessGroup) {
  check(deleteSessionKeyItem(kAccount, accessGroup));
}

}  // namespace norvane
