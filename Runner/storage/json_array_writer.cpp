#include "storage/json_array_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "base/utf8.h"

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

/// Collects whether a text has a byte that needs an escape and whether it has one beyond ASCII.
class Scan {
 public:
  // Zero bytes are found by the classic (x - 1) & ~x test on each byte, control characters by the
  // same test with 0x20 for 1. Bytes beyond ASCII never count: ~word keeps them out of all three.
  void add(std::uint64_t word) {
    const auto below = [](std::uint64_t x, std::uint64_t limit) { return x - kOnes * limit; };
    const std::uint64_t quotes = below(word ^ kOnes * '"', 1);
    const std::uint64_t backslashes = below(word ^ kOnes * '\\', 1);
    const std::uint64_t controls = below(word, 0x20);
    escapes_ |= (quotes | backslashes | controls) & ~word;
    highs_ |= word;
  }
  bool needsEscape() const { return (escapes_ & kHighs) != 0; }
  bool isAscii() const { return (highs_ & kHighs) == 0; }

 private:
  static constexpr std::uint64_t kOnes = 0x0101010101010101;
  static constexpr std::uint64_t kHighs = 0x8080808080808080;

  std::uint64_t escapes_ = 0;
  std::uint64_t highs_ = 0;
};

template <class Word>
Word copyWord(const char* from, std::uint8_t* to) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
  return word;
}

/// Copies `text` to `to`, and scans it on the way. The last word overlaps the one before: there is
/// no loop over single bytes but for texts of less than four.
Scan copyScanned(std::string_view text, std::uint8_t* to) {
  Scan scan;
  const char* const from = text.data();
  const std::size_t size = text.size();
  if (size >= 8) {
    for (std::size_t at = 0; at + 8 < size; at += 8) {
      scan.add(copyWord<std::uint64_t>(from + at, to + at));
    }
    scan.add(copyWord<std::uint64_t>(from + size - 8, to + size - 8));
  } else if (size >= 4) {
    const std::uint64_t front = copyWord<std::uint32_t>(from, to);
    const std::uint64_t back = copyWord<std::uint32_t>(from + size - 4, to + size - 4);
    scan.add(front | back << 32);
  } else {
    std::uint64_t bytes = 0x2020202020202020;  // harmless ones where the text has none
    for (std::size_t at = 0; at < size; ++at) {
      bytes = bytes << 8 | copyWord<std::uint8_t>(from + at, to + at);
    }
    scan.add(bytes);
  }
  return scan;
}

std::uint8_t* copyEscaped(std::string_view text, std::uint8_t* to) {
  constexpr char kHex[] = "0123456789abcdef";
  for (const char c : text) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (kEscapes[byte] == 0) {
      *to++ = byte;
      continue;
    }
    *to++ = '\\';
    *to++ = static_cast<std::uint8_t>(kEscapes[byte]);
    if (kEscapes[byte] == 'u') {
      for (const char digit : {'0', '0', kHex[byte >> 4], kHex[byte & 15]}) {
        *to++ = static_cast<std::uint8_t>(digit);
      }
    }
  }
  return to;
}

std::uint8_t* writeText(std::string_view text, std::uint8_t* to) {
  *to++ = '"';
  const Scan scan = copyScanned(text, to);
  if (!scan.isAscii() && !isWellFormedUtf8(text)) {
    throw std::invalid_argument("a text is not UTF-8");
  }
  to = scan.needsEscape() ? copyEscaped(text, to) : to + text.size();
  *to++ = '"';
  return to;
}

}  // namespace

JsonArrayWriter::JsonArrayWriter(SecureBuffer& out) : out_(out) { raw('['); }

void JsonArrayWriter::raw(char c) {
  *out_.space(1) = static_cast<std::uint8_t>(c);
  out_.advance(1);
}

void JsonArrayWriter::object(std::span<const JsonMember> members) {
  std::size_t most = sizeof ",{}";
  for (const auto& [name, value] : members) {
    most += kLongestEscape * (name.size() + value.size()) + sizeof "\"\":\"\",";
  }
  std::uint8_t* const begin = out_.space(most);
  std::uint8_t* to = begin;
  if (!std::exchange(empty_, false)) *to++ = ',';
  *to++ = '{';
  bool first = true;
  for (const auto& [name, value] : members) {
    if (!std::exchange(first, false)) *to++ = ',';
    *to++ = '"';
    to = std::copy(name.begin(), name.end(), to);
    *to++ = '"';
    *to++ = ':';
    to = writeText(value, to);
  }
  *to++ = '}';
  out_.advance(static_cast<std::size_t>(to - begin));
}

void JsonArrayWriter::finish() { raw(']'); }

}  // namespace norvane
