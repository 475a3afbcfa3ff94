#pragma once

#include <string>

#include "autofill/items.h"
#include "platform/flutter/flutter_value.h"

namespace norvane {

/// Replaces the passkey index and its key with those of the passkeys among `items`, or removes both
/// when there is none; gives the reply. Throws on failure, leaving what it had done. Worker
/// threads.
FlutterValue writePasskeyIndex(const Items& items, const std::string& accessGroup);

}  // namespace norvane
