#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "storage/json_array_writer.h"

namespace norvane {

/// The sealed index of the vault's passkeys and its session key. Any thread.
struct PasskeyIndex {
  /// One entry: names and texts.
  using Entry = std::vector<JsonMember>;

  static std::string indexURL();

  /// Seals `entries` as one JSON array under a new key, stores the key, then the file. Raises the
  /// storage errors and those of the file system, and leaves what it had done.
  static void write(std::span<const Entry> entries, const std::optional<std::string>& accessGroup);
  /// Removes key and file, as far as each can be removed. Never throws.
  static void clear(const std::optional<std::string>& accessGroup) noexcept;

  /// These raise PasskeyIndexError::keychainStatus.
  static void saveKey(std::span<const std::uint8_t> key,
                      const std::optional<std::string>& accessGroup);
  static void deleteKey(const std::optional<std::string>& accessGroup);
};

}  // namespace norvane
