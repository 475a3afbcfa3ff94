#include "platform/json_array_writer.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "platform/utf8.h"

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

constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kHighs = 0x8080808080808080;

/// Whether any of the eight bytes is a control character, a quotation mark or a backslash. Zero
/// bytes are found by the classic (x - 1) & ~x test on each byte; bytes above ASCII never count.
bool needsEscape(std::uint64_t bytes) {
  const auto hasZero = [](std::uint64_t x) { return (x - kOnes) & ~x & kHighs; };
  const std::uint64_t control = (bytes - kOnes * 0x20) & ~bytes & kHighs;
  return (control | hasZero(bytes ^ kOnes * '"') | hasZero(bytes ^ kOnes * '\\')) != 0;
}

std::uint8_t* escape(std::uint8_t* to, std::uint8_t byte) {
  constexpr char kHex[] = "0123456789abcdef";
  *to++ = '\\';
  *to++ = static_cast<std::uint8_t>(kEscapes[byte]);
  if (kEscapes[byte] == 'u') {
    for (const char digit : {'0', '0', kHex[byte >> 4], kHex[byte & 15]}) {
      *to++ = static_cast<std::uint8_t>(digit);
    }
  }
  return to;
}

}  // namespace

JsonArrayWriter::JsonArrayWriter(SecureBuffer& out) : out_(out) { raw('['); }

void JsonArrayWriter::raw(char c) {
  *out_.space(1) = static_cast<std::uint8_t>(c);
  out_.advance(1);
}

void JsonArrayWriter::object(std::span<const JsonMember> members) {
  if (!empty_) raw(',');
  empty_ = false;
  char separator = '{';
  for (const auto& [name, value] : members) {
    raw(separator);
    text(name);
    raw(':');
    text(value);
    separator = ',';
  }
  if (members.empty()) raw('{');
  raw('}');
}

void JsonArrayWriter::finish() { raw(']'); }

void JsonArrayWriter::text(std::string_view text) {
  if (!isWellFormedUtf8(text)) throw std::invalid_argument("a text is not UTF-8");
  std::uint8_t* const begin = out_.space(kLongestEscape * text.size() + 2);
  std::uint8_t* to = begin;
  const auto* from = reinterpret_cast<const std::uint8_t*>(text.data());
  std::size_t left = text.size();
  *to++ = '"';
  while (left > 0) {
    if (left >= sizeof(std::uint64_t)) {
      std::uint64_t bytes;
      std::memcpy(&bytes, from, sizeof bytes);
      if (!needsEscape(bytes)) {
        std::memcpy(to, &bytes, sizeof bytes);
        to += sizeof bytes;
        from += sizeof bytes;
        left -= sizeof bytes;
        continue;
      }
    }
    const std::uint8_t byte = *from++;
    --left;
    if (kEscapes[byte] == 0) {
      *to++ = byte;
    } else {
      to = escape(to, byte);
    }
  }
  *to++ = '"';
  out_.advance(static_cast<std::size_t>(to - begin));
}

}  // namespace norvane
