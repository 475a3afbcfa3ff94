#include "platform/frame_record.h"

#include <array>
#include <charconv>
#include <cmath>

namespace norvane {

std::string frameRecord(const NSRect& frame) {
  std::string record;
  for (const double value : {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height}) {
    std::array<char, 32> digits;  // the shortest form of a double takes at most 24
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    if (!record.empty()) record += ' ';
    record.append(digits.data(), end);
  }
  return record;
}

std::optional<NSRect> parseFrameRecord(std::string_view record) {
  std::array<double, 4> values;
  const char* at = record.data();
  const char* const end = at + record.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0 && (at == end || *at++ != ' ')) return std::nullopt;
    const auto [next, error] = std::from_chars(at, end, values[i]);
    if (error != std::errc() || !std::isfinite(values[i])) return std::nullopt;
    at = next;
  }
  const auto [x, y, width, height] = values;
  if (at != end || width <= 0 || height <= 0) return std::nullopt;
  return NSRect{{x, y}, {width, height}};
}

}  // namespace norvane
