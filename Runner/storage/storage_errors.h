#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace norvane {

// What can go wrong in the shared secure storage, with the descriptions that reach the user. Some
// cases belong to the side that reads: the AutoFill extension.

struct SharedKeychainError {
  enum class Case { unexpectedStatus, invalidPayload };
  Case error;
  std::int32_t status = 0;  ///< of `unexpectedStatus`
};

enum class SnapshotCryptoError { invalidKeyLength, sealFailed, openFailed };

enum class AppGroupSnapshotError { containerUnavailable };

struct PasskeyIndexError {
  enum class Case { keychainStatus, notUnlocked, indexMissing, invalidIndex };
  Case error;
  std::int32_t status = 0;  ///< of `keychainStatus`
};

std::string errorDescription(const SharedKeychainError& error);
std::string errorDescription(SnapshotCryptoError error);
std::string errorDescription(AppGroupSnapshotError error);
std::string errorDescription(const PasskeyIndexError& error);

/// Raises one of the errors above; `what` is its description.
template <class Error>
class StorageFailure : public std::runtime_error {
 public:
  explicit StorageFailure(Error raised)
      : std::runtime_error(errorDescription(raised)), error(raised) {}

  Error error;
};

}  // namespace norvane
