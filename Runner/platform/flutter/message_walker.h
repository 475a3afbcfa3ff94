#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/utf8.h"
#include "platform/flutter/flutter_value_view.h"

namespace norvane {

// Sizes: one byte below 254, else a marker and the size in 2 or 4 bytes.
inline constexpr std::uint8_t kSize16 = 254;
inline constexpr std::uint8_t kSize32 = 255;

/// The number at `at`, whose alignment does not matter.
template <class T>
T numberAt(const std::uint8_t* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

/// Moves over the values of a message, which is `Checked` on the way or trusted.
template <bool Checked>
class MessageWalker {
 public:
  /// `end` is the message's; only who checks asks for it.
  explicit MessageWalker(const std::uint8_t* at, const std::uint8_t* end = nullptr)
      : at_(at), end_(end) {}

  /// Moves over one value; of a list or map only over its head, setting `children` to the number
  /// of values that follow it. False when the value is ill-formed.
  bool head(std::uint64_t& children) {
    if (!has(1)) return false;
    const auto type = static_cast<FlutterType>(*at_++);
    if (type == FlutterType::text) return text();  // nearly every value of a call is one
    std::size_t count = 0;
    switch (type) {
      case FlutterType::null:
      case FlutterType::yes:
      case FlutterType::no:
        return true;
      case FlutterType::int32:
        return skip(4);
      case FlutterType::int64:
        return skip(8);
      case FlutterType::float64:
        return aligned(8, 1);
      case FlutterType::text:
        return text();
      case FlutterType::bytes:
        return size(count) && skip(count);
      case FlutterType::int32List:
      case FlutterType::float32List:
        return size(count) && aligned(4, count);
      case FlutterType::int64List:
      case FlutterType::float64List:
        return size(count) && aligned(8, count);
      case FlutterType::list:
        if (!size(count)) return false;
        children = count;
        return has(children);  // every value takes at least one byte
      case FlutterType::map:
        if (!size(count)) return false;
        children = 2 * std::uint64_t{count};
        return has(children);
    }
    return false;
  }

  /// Moves over a size.
  bool size(std::size_t& value) {
    if (!has(1)) return false;
    value = *at_++;
    if (value < kSize16) return true;
    const std::size_t width = value == kSize16 ? 2 : 4;
    if (!has(width)) return false;
    value = width == 2 ? numberAt<std::uint16_t>(at_) : numberAt<std::uint32_t>(at_);
    at_ += width;
    return true;
  }

  void align(std::size_t alignment) { at_ += padding(alignment); }
  const std::uint8_t* position() const { return at_; }

 private:
  bool has(std::uint64_t bytes) const {
    return !Checked || bytes <= static_cast<std::uint64_t>(end_ - at_);
  }
  /// The message itself is aligned, so that an address says what is missing.
  std::size_t padding(std::size_t alignment) const {
    return -reinterpret_cast<std::uintptr_t>(at_) & (alignment - 1);
  }
  bool text() {
    std::size_t count = 0;
    if (!size(count) || !has(count)) return false;
    const std::string_view text(reinterpret_cast<const char*>(at_), count);
    at_ += count;
    return !Checked || isAscii(text, static_cast<std::size_t>(end_ - at_) + count) ||
           isWellFormedUtf8(text);
  }
  bool skip(std::uint64_t bytes) {
    if (!has(bytes)) return false;
    at_ += bytes;
    return true;
  }
  bool aligned(std::size_t width, std::uint64_t count) {
    return skip(padding(width)) && skip(width * count);
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

}  // namespace norvane
