#include "storage/storage_errors.h"

namespace norvane {
namespace {

std::string keychainStatus(std::int32_t status) {
  return "keychain status " + std::to_string(status);
}

}  // namespace

std::string errorDescription(const SharedKeychainError& error) {
  switch (error.error) {
    case SharedKeychainError::Case::unexpectedStatus:
      return keychainStatus(error.status);
    case SharedKeychainError::Case::invalidPayload:
      return "keychain data invalid";
  }
  return {};
}

std::string errorDescription(SnapshotCryptoError error) {
  switch (error) {
    case SnapshotCryptoError::invalidKeyLength:
      return "key must be 32 bytes";
    case SnapshotCryptoError::sealFailed:
      return "AES-GCM seal failed";
    case SnapshotCryptoError::openFailed:
      return "AES-GCM open failed";
  }
  return {};
}

std::string errorDescription(AppGroupSnapshotError error) {
  switch (error) {
    case AppGroupSnapshotError::containerUnavailable:
      return "app group container not available (entitlement missing?)";
  }
  return {};
}

std::string errorDescription(const PasskeyIndexError& error) {
  switch (error.error) {
    case PasskeyIndexError::Case::keychainStatus:
      return keychainStatus(error.status);
    case PasskeyIndexError::Case::notUnlocked:
      return "passkey index locked (no session key)";
    case PasskeyIndexError::Case::indexMissing:
      return "passkey_index.enc not present";
    case PasskeyIndexError::Case::invalidIndex:
      return "passkey index payload invalid";
  }
  return {};
}

}  // namespace norvane
