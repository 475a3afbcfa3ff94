#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace norvane {

/// The vault snapshot's session key in the keychain group that the AutoFill extension shares. Any
/// thread. Both raise SharedKeychainError::unexpectedStatus.
struct SharedKeychain {
  static void saveSessionKey(std::span<const std::uint8_t> key, const std::string& accessGroup);
  static void deleteSessionKey(const std::string& accessGroup);
};

}  // namespace norvane
