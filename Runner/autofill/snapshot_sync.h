#pragma once

#include <string>

#include "autofill/items.h"
#include "platform/flutter/flutter_value.h"

namespace norvane {

// The vault snapshot: what the AutoFill extension fills passwords from. Worker threads.

/// Replaces the snapshot and its key with those of the logins among `items`; gives the reply.
/// Throws on failure, leaving what it had done.
FlutterValue writeSnapshot(const Items& items, const std::string& accessGroup);

/// Removes the snapshot's key and the snapshot, as far as each can be removed.
void removeSnapshot(const std::string& accessGroup) noexcept;

}  // namespace norvane
