#include "base/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <optional>
#include <utility>

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

void append(std::string& text, char32_t character) {
  const auto continuation = [&](unsigned shift) {
    text += static_cast<char>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    continuation(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    continuation(6);
    continuation(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

/// Nothing when it is not a text in the locale's encoding.
std::optional<std::string> readInLocale(std::string_view foreign) {
  std::string text;
  std::mbstate_t state{};
  while (!foreign.empty()) {
    wchar_t character = 0;
    const std::size_t length = std::mbrtowc(&character, foreign.data(), foreign.size(), &state);
    if (length > foreign.size()) return std::nullopt;  // one of its error values
    append(text, character);
    foreign.remove_prefix(length > 0 ? length : 1);  // 0: it was a NUL
  }
  // Some locales read what lies beyond Unicode.
  return isWellFormedUtf8(text) ? std::optional(std::move(text)) : std::nullopt;
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

std::string utf8Of(std::string_view foreign) {
  if (isWellFormedUtf8(foreign)) return std::string(foreign);
  if (auto text = readInLocale(foreign)) return *std::move(text);
  std::string text;
  while (!foreign.empty()) {
    const auto* at = reinterpret_cast<const unsigned char*>(foreign.data());
    const std::size_t length = *at < 0x80 ? 1 : characterLength(at, foreign.size());
    text += length > 0 ? foreign.substr(0, length) : "\uFFFD";
    foreign.remove_prefix(length > 0 ? length : 1);
  }
  return text;
}

std::string utf8OfLatin1(std::string_view foreign) {
  if (isWellFormedUtf8(foreign)) return std::string(foreign);
  std::string text;
  for (const char byte : foreign) append(text, static_cast<unsigned char>(byte));
  return text;
}

}  // namespace norvane
