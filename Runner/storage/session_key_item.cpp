#include "storage/session_key_item.h"

#include "platform/platform.h"

namespace norvane {
namespace {

KeychainQuery itemOf(const std::string& account, const std::optional<std::string>& accessGroup) {
  return {"cn.kestrio.norvane.autofill.snapshot", account, accessGroup};
}

}  // namespace

OSStatus saveSessionKeyItem(std::span<const std::uint8_t> key, const std::string& account,
                            const std::optional<std::string>& accessGroup) {
  Keychain& keychain = platform().keychain;
  const KeychainQuery query = itemOf(account, accessGroup);
  const KeychainAttributes attributes{key, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly};
  const OSStatus status = keychain.SecItemUpdate(query, attributes);
  if (status != errSecItemNotFound) return status;
  return keychain.SecItemAdd(query, attributes, /*synchronizable=*/false);
}

OSStatus deleteSessionKeyItem(const std::string& account,
                              const std::optional<std::string>& accessGroup) {
  const OSStatus status = platform().keychain.SecItemDelete(itemOf(account, accessGroup));
  return status == errSecItemNotFound ? errSecSuccess : status;
}

}  // namespace norvane
