#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/os_status.h"

namespace norvane {

// Result codes of the keychain.
inline constexpr OSStatus errSecSuccess = 0;
inline constexpr OSStatus errSecIO = -36;
inline constexpr OSStatus errSecNotAvailable = -25291;  ///< there is no keychain
inline constexpr OSStatus errSecDuplicateItem = -25299;
inline constexpr OSStatus errSecItemNotFound = -25300;
/// The keychain is locked, or did not answer in time.
inline constexpr OSStatus errSecInteractionNotAllowed = -25308;

inline constexpr const char* kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly =
    "kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly";

/// Names generic-password items. Without a group it names the items of every group.
struct KeychainQuery {
  std::string service;                     ///< kSecAttrService
  std::string account;                     ///< kSecAttrAccount
  std::optional<std::string> accessGroup;  ///< kSecAttrAccessGroup
};

/// What is set of an item when it is updated or added.
struct KeychainAttributes {
  std::span<const std::uint8_t> valueData;  ///< kSecValueData
  std::string accessible;                   ///< kSecAttrAccessible
};

/// The keychain. Any thread; each call is complete when it returns, and says what has happened. It
/// may wait for other processes, for a few seconds at most, but never for the person. Texts are
/// UTF-8: errSecIO for others, as for what cannot be read or written. `valueData` is copied.
class Keychain {
 public:
  virtual ~Keychain() = default;

  /// Gives every item that matches the attributes; its group stays. errSecItemNotFound when none
  /// does. After another failure some of several may have them.
  virtual OSStatus SecItemUpdate(const KeychainQuery& query,
                                 const KeychainAttributes& attributes) = 0;
  /// Adds an item; of two calls at once one succeeds. errSecDuplicateItem when `item`, as a query,
  /// names one already, whose value stays.
  virtual OSStatus SecItemAdd(const KeychainQuery& item, const KeychainAttributes& attributes,
                              bool synchronizable) = 0;
  /// Deletes every item that matches; errSecItemNotFound when none does. After another failure
  /// some of several may be gone.
  virtual OSStatus SecItemDelete(const KeychainQuery& query) = 0;
};

}  // namespace norvane
