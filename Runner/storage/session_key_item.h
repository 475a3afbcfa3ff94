#pragma once

#include <optional>
#include <span>
#include <string>

#include "platform/keychain.h"

namespace norvane {

// A session key's keychain item, of the service that the AutoFill extension reads. The status of
// the call that failed, or errSecSuccess.

/// Updates the item of `account`, or adds it when there is none.
OSStatus saveSessionKeyItem(std::span<const std::uint8_t> key, const std::string& account,
                            const std::optional<std::string>& accessGroup);
/// Deleting an item that does not exist is success.
OSStatus deleteSessionKeyItem(const std::string& account,
                              const std::optional<std::string>& accessGroup);

}  // namespace norvane
