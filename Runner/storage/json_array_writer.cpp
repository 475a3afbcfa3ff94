#include "storage/json_array_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/byte_vector.h"

namespace norvane {
namespace {

// What a byte becomes inside a JSON text: itself (0), 'u' for \u00XX, or a backslash and the
// letter.
constexpr std::array<char, 256> kEscapes = [] {
  std::array<char, 256> escapes{};
  for (int c = 0; c < 0x20; ++c) escapes[c] = 'u';
  escapes['\b'] = 'b';
  escapes['\f'] = 'f';
  escapes['\n'] = 'n';
  escapes['\r'] = 'r';
  escapes['\t'] = 't';
  escapes['"'] = '"';
  escapes['\\'] = '\\';
  return escapes;
}();
constexpr std::size_t kLongestEscape = 6;

constexpr std::size_t kStep = sizeof(ByteVector);

ByteMask needEscape(ByteVector bytes) { return (bytes == '"') | (bytes == '\\') | (bytes < 0x20); }

/// Copies sixteen bytes, and gives them.
ByteVector copyBytes(const char* from, std::uint8_t* to) {
  const ByteVector bytes = loadBytes(from);
  storeBytes(bytes, to);
  return bytes;
}

template <class Word>
Word copyWord(const char* from, std::uint8_t* to) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
  return word;
}

/// Copies fewer than sixteen bytes, and gives them in some order, spaces among them. Two words that
/// overlap: no loop over bytes but for the shortest.
ByteVector copyFew(std::string_view bytes, std::uint8_t* to) {
  using Words [[gnu::vector_size(16)]] = std::uint64_t;
  constexpr std::uint64_t kSpaces = 0x2020202020202020;
  const char* const from = bytes.data();
  const std::size_t size = bytes.size();
  Words words{kSpaces, kSpaces};
  if (size >= 8) {
    const std::size_t back = size - 8;
    words =
        Words{copyWord<std::uint64_t>(from, to), copyWord<std::uint64_t>(from + back, to + back)};
  } else if (size >= 4) {
    const std::size_t back = size - 4;
    const std::uint64_t front = copyWord<std::uint32_t>(from, to);
    words[0] = front << 32 | copyWord<std::uint32_t>(from + back, to + back);
  } else {
    for (std::size_t at = 0; at < size; ++at) {
      words[0] = words[0] << 8 | copyWord<std::uint8_t>(from + at, to + at);
    }
  }
  return reinterpret_cast<ByteVector>(words);
}

/// Copies `text` up to the first byte that needs an escape; gives the number of bytes before it.
/// Up to as many as the text has may have been written to. The last vector overlaps the one before.
std::size_t copyPlain(std::string_view text, std::uint8_t* to) {
  if (text.size() < kStep) {
    if (!anySet(needEscape(copyFew(text, to)))) return text.size();
    const auto isEscaped = [](char c) { return kEscapes[static_cast<std::uint8_t>(c)] != 0; };
    return static_cast<std::size_t>(std::ranges::find_if(text, isEscaped) - text.begin());
  }
  const std::size_t last = text.size() - kStep;
  const auto copyAt = [&](std::size_t at) {
    return needEscape(copyBytes(text.data() + at, to + at));
  };
  // Without a branch first: how often a loop would turn cannot be guessed.
  if (text.size() <= 4 * kStep && !anySet(copyAt(0) | copyAt(std::min(kStep, last)) |
                                          copyAt(std::min(2 * kStep, last)) | copyAt(last))) {
    return text.size();
  }
  for (std::size_t at = 0;; at = std::min(at + kStep, last)) {
    const ByteMask escapes = copyAt(at);
    if (anySet(escapes)) return at + firstSet(escapes);
    if (at == last) return text.size();
  }
}

/// Writes what stands for `c`, which needs an escape; gives the end of it.
std::uint8_t* writeEscape(char c, std::uint8_t* to) {
  constexpr char kHex[] = "0123456789abcdef";
  const auto byte = static_cast<std::uint8_t>(c);
  *to++ = '\\';
  *to++ = static_cast<std::uint8_t>(kEscapes[byte]);
  if (kEscapes[byte] == 'u') {
    for (const char digit : {'0', '0', kHex[byte >> 4], kHex[byte & 15]}) {
      *to++ = static_cast<std::uint8_t>(digit);
    }
  }
  return to;
}

std::uint8_t* writeText(std::string_view text, std::uint8_t* to) {
  for (;;) {
    const std::size_t plain = copyPlain(text, to);
    to += plain;
    if (plain == text.size()) return to;
    to = writeEscape(text[plain], to);
    text.remove_prefix(plain + 1);
  }
}

}  // namespace

JsonArrayWriter::JsonArrayWriter(SecureBuffer& out) : out_(out) {
  raw('[');
  begin_ = out_.size();
}

void JsonArrayWriter::raw(char c) {
  *out_.space(1) = static_cast<std::uint8_t>(c);
  out_.advance(1);
}

void JsonArrayWriter::object(std::span<const JsonMember> members) {
  std::size_t most = sizeof ",{}";
  for (const auto& [name, value] : members) {
    most += name.size() + kLongestEscape * value.size() + sizeof "\"\":\"\",";
  }
  std::uint8_t* const begin = out_.space(most);
  std::uint8_t* to = begin;
  if (out_.size() > begin_) *to++ = ',';
  *to++ = '{';
  bool first = true;
  for (const auto& [name, value] : members) {
    if (!std::exchange(first, false)) *to++ = ',';
    *to++ = '"';
    to += copyPlain(name, to);
    for (const char c : {'"', ':', '"'}) *to++ = static_cast<std::uint8_t>(c);
    to = writeText(value, to);
    *to++ = '"';
  }
  *to++ = '}';
  out_.advance(static_cast<std::size_t>(to - begin));
}

}  // namespace norvane
