#include "base/base64.h"

namespace norvane {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
  // The padding that is there counts: what is there and what is missing make groups of four, at
  // most two characters of which are padding.
  const std::size_t digits = text.find_last_not_of('=') + 1;
  const std::size_t padded = (text.size() + 3) / 4 * 4;
  if (padded - digits > 2) return std::nullopt;

  std::vector<std::uint8_t> bytes;
  bytes.reserve(padded / 4 * 3);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char digit : text.substr(0, digits)) {
    const auto value = kAlphabet.find(digit);
    if (value == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<std::uint8_t>(bits >> count));
    }
  }
  return bytes;
}

}  // namespace norvane
