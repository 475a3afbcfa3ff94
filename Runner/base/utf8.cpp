#include "base/utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <optional>
#include <utility>

namespace norvane {
namespace {

// A character's last byte looks back at three others.
constexpr std::size_t kMostBefore = 3;

/// The bytes of `bytes` that do not go with the one, two and three bytes before each of them.
ByteMask illFormedAfter(ByteVector bytes, ByteVector back1, ByteVector back2, ByteVector back3) {
  const ByteMask continuation = (bytes & 0xC0) == 0x80;
  const ByteMask expected = (back1 >= 0xC0) | (back2 >= 0xE0) | (back3 >= 0xF0);
  const ByteMask never = ((bytes & 0xFE) == 0xC0) | (bytes >= 0xF5);
  const ByteMask overlong = ((back1 == 0xE0) & (bytes < 0xA0)) | ((back1 == 0xF0) & (bytes < 0x90));
  const ByteMask surrogate = (back1 == 0xED) & (bytes >= 0xA0);
  const ByteMask aboveUnicode = (back1 == 0xF4) & (bytes >= 0x90);
  return (continuation ^ expected) | never | overlong | surrogate | aboveUnicode;
}

/// Of the sixteen bytes at `at`, which have `kMostBefore` others before them.
ByteMask illFormedAt(const char* at) {
  return illFormedAfter(loadBytes(at), loadBytes(at - 1), loadBytes(at - 2), loadBytes(at - 3));
}

/// Of the first sixteen bytes of a text.
ByteMask illFormedAtFront(const char* at) {
  const ByteVector bytes = loadBytes(at);
  return illFormedAfter(bytes, movedUp<1>(bytes), movedUp<2>(bytes), movedUp<3>(bytes));
}

bool endsInsideACharacter(std::string_view text) {
  const auto back = [&](std::size_t places) {
    return static_cast<unsigned char>(text[text.size() - places]);
  };
  return back(1) >= 0xC0 || back(2) >= 0xE0 || back(3) >= 0xF0;
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
  constexpr std::size_t kStep = sizeof(ByteVector);
  if (text.size() < kStep + kMostBefore) {
    std::array<char, 2 * kStep> padded{};  // what is cut off lacks its continuation in a zero
    std::ranges::copy(text, padded.begin());
    return !anySet(illFormedAtFront(padded.data()) | illFormedAt(padded.data() + kStep));
  }
  const char* const last = text.data() + text.size() - kStep;
  ByteMask illFormed = illFormedAtFront(text.data()) | illFormedAt(last);
  for (const char* at = text.data() + kStep; at < last; at += kStep) illFormed |= illFormedAt(at);
  return !anySet(illFormed) && !endsInsideACharacter(text);
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
