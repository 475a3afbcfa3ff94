#include "base/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace norvane {
namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080;

template <class Word>
Word load(const unsigned char* at) {
  Word word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// Most texts of a call are short and ASCII: steps of two words, the last ones overlapping.
bool isAscii(const unsigned char* at, std::size_t size) {
  std::uint64_t seen = 0;
  if (size >= 16) {
    seen = load<std::uint64_t>(at + size - 16) | load<std::uint64_t>(at + size - 8);
    for (; size > 16; at += 16, size -= 16) {
      seen |= load<std::uint64_t>(at) | load<std::uint64_t>(at + 8);
    }
  } else if (size >= 8) {
    seen = load<std::uint64_t>(at) | load<std::uint64_t>(at + size - 8);
  } else if (size >= 4) {
    seen = load<std::uint32_t>(at) | load<std::uint32_t>(at + size - 4);
  } else {
    for (std::size_t i = 0; i < size; ++i) seen |= at[i];
  }
  return (seen & kHighBits) == 0;
}

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

/// The length of the multi-byte character at `at`, 0 when it is ill-formed.
std::size_t characterLength(const unsigned char* at, std::size_t left) {
  const unsigned char lead = at[0];
  if (lead >= 0xC2 && lead <= 0xDF) return left >= 2 && isContinuation(at[1]) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    if (left < 3 || !isContinuation(at[1]) || !isContinuation(at[2])) return 0;
    const bool overlong = lead == 0xE0 && at[1] < 0xA0;
    const bool surrogate = lead == 0xED && at[1] > 0x9F;
    return overlong || surrogate ? 0 : 3;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    if (left < 4 || !isContinuation(at[1]) || !isContinuation(at[2]) || !isContinuation(at[3])) {
      return 0;
    }
    const bool overlong = lead == 0xF0 && at[1] < 0x90;
    const bool aboveUnicode = lead == 0xF4 && at[1] > 0x8F;
    return overlong || aboveUnicode ? 0 : 4;
  }
  return 0;
}

}  // namespace

bool isWellFormedUtf8(std::string_view text) {
  const auto* at = reinterpret_cast<const unsigned char*>(text.data());
  std::size_t left = text.size();
  if (isAscii(at, left)) return true;
  while (left > 0) {
    if (left >= 8 && (load<std::uint64_t>(at) & kHighBits) == 0) {
      at += 8;
      left -= 8;
      continue;
    }
    const std::size_t length = *at < 0x80 ? 1 : characterLength(at, left);
    if (length == 0) return false;
    at += length;
    left -= length;
  }
  return true;
}

}  // namespace norvane
