#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "storage/snapshot_crypto.h"

namespace norvane {

// The one way in which a file for the AutoFill extension comes and goes, with its session key. Any
// thread.

/// Seals `plaintext` under a new key, has the key saved, then writes the file at `url`. Raises the
/// storage errors, what the two raise and those of the file system, and leaves what it had done.
void writeSealedFile(Plaintext plaintext,
                     const std::function<void(std::span<const std::uint8_t> key)>& saveKey,
                     const std::function<std::string()>& url);

/// Makes both calls, whatever they throw.
void removeSealedFile(const std::function<void()>& deleteKey,
                      const std::function<void()>& deleteFile) noexcept;

}  // namespace norvane
