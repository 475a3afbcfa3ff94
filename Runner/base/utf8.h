#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/byte_vector.h"

namespace norvane {

/// Whether `text` is ASCII. `readable` bytes, no fewer than it has, may be read from its first on:
/// a short text is looked at together with what stands behind it.
inline bool isAscii(std::string_view text, std::size_t readable) {
  constexpr std::size_t kStep = sizeof(ByteVector);
  const char* const at = text.data();
  const auto beyondAscii = [](ByteVector bytes) { return bytes >= 0x80; };
  if (text.size() >= kStep) {
    // Four vectors without a branch, which overlap in a short text: how often a loop would turn
    // cannot be guessed, and most texts of a call are no longer.
    const std::size_t last = text.size() - kStep;
    ByteVector seen = loadBytes(at) | loadBytes(at + std::min(kStep, last)) |
                      loadBytes(at + std::min(2 * kStep, last)) | loadBytes(at + last);
    for (std::size_t next = 3 * kStep; next < last; next += kStep) seen |= loadBytes(at + next);
    return !anySet(beyondAscii(seen));
  }
  if (readable >= kStep) return firstSet(beyondAscii(loadBytes(at))) >= text.size();
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Whether `text` is well-formed UTF-8 (Unicode 15, table 3-7): no overlong form, no surrogate,
/// nothing above U+10FFFF, nothing cut off. NUL is a character like any other.
bool isWellFormedUtf8(std::string_view text);

/// A text of the system's (a message, a path, what holds one of them) as UTF-8, which all texts
/// here are: as it is where it is that already, else read in the locale's encoding, else with
/// U+FFFD in the place of each byte that is ill-formed. Any thread.
std::string utf8Of(std::string_view foreign);

/// The same for a text that is Latin-1 unless it is UTF-8.
std::string utf8OfLatin1(std::string_view foreign);

}  // namespace norvane
