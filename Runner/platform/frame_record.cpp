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
  std::array<double, 8> values;  // the window's frame and the screen's
  std::size_t count = 0;
  const char* at = record.data();
  const char* const end = at + record.size();
  while (at != end && count < values.size()) {
    const auto [next, error] = std::from_chars(at, end, values[count]);
    if (error != std::errc() || !std::isfinite(values[count])) return std::nullopt;
    ++count;
    at = next;
    if (at != end && *at++ != ' ') return std::nullopt;
  }
  if (at != end || (count != 4 && count != 8)) return std::nullopt;
  const NSRect frame{{values[0], values[1]}, {values[2], values[3]}};
  if (frame.size.width <= 0 || frame.size.height <= 0) return std::nullopt;
  return frame;
}

}  // namespace norvane
