#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include "base/secure_memory.h"

namespace norvane {

// A change is for good when the call returns. Where the directory cannot be synced, it has happened
// all the same, and a machine that loses power may take it back: one log record, unless the file
// system has no such thing.

/// Replaces the file at `path` whole: a reader, or a machine that loses power, finds the old
/// content or the new, never a mixture. Mode 0600 whatever the umask; a symbolic link at `path` is
/// replaced, not followed. Any thread. Throws std::system_error, having removed what it had begun;
/// the old file is there then.
void writeFileAtomically(const std::string& path, std::span<const std::byte> content);

/// Removes what is at `path`: a directory with its content, a symbolic link and not what it leads
/// to. False when there is nothing. Any thread. Throws std::system_error.
bool removeForGood(const std::string& path);

/// Removes what writeFileAtomically has left in `directory` in a process that was killed. Nobody
/// else may be writing there.
void sweepTemporaryFiles(const std::string& directory);

/// Writes all of `content`, through interruptions and short writes.
std::error_code writeAll(int fd, std::string_view content);

/// The whole file; throws std::system_error.
Bytes readFile(const std::string& path);

inline std::string_view textOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace norvane
