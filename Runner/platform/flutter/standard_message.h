#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/secure_memory.h"
#include "platform/flutter/flutter_value.h"
#include "platform/flutter/flutter_value_view.h"

namespace norvane {

// The wire format is little-endian, as every machine that this host runs on.
static_assert(std::endian::native == std::endian::little);

/// Lists and maps that hold one another; a message that nests deeper is undecodable.
inline constexpr int kMaxNesting = 128;

/// Appends values to a message in the standard message codec. Throws std::length_error for a text
/// or list of 2^32 elements or more, which the format cannot carry.
class StandardMessageWriter {
 public:
  /// `message` is whole: its first byte is the one that alignment is counted from.
  explicit StandardMessageWriter(Bytes& message) : message_(message) {}

  void value(const FlutterValue& value);

  void null() { type(FlutterType::null); }
  void boolean(bool value) { type(value ? FlutterType::yes : FlutterType::no); }
  void int32(std::int32_t value);
  void int64(std::int64_t value);
  void float64(double value);
  void text(std::string_view value);
  void bytes(std::span<const std::uint8_t> value);
  /// The head of a list; `count` values follow.
  void list(std::size_t count);
  /// The head of a map; `count` keys follow, each before its value.
  void map(std::size_t count);

 private:
  void type(FlutterType type) { message_.push_back(static_cast<std::uint8_t>(type)); }
  void raw(const void* data, std::size_t size);
  void size(std::size_t count);
  void align(std::size_t alignment);
  template <class Element>
  void elements(FlutterType type, std::span<const Element> values);

  Bytes& message_;
};

/// The end of the value whose type byte is at `at`, in a message that ends at `end` and whose first
/// byte is aligned to 8 bytes; null when the value is ill-formed: a length beyond the message,
/// nesting over `kMaxNesting`, an unknown type (the big integers that no UI writes any more among
/// them), a text that is not UTF-8. One pass; allocates nothing.
const std::uint8_t* checkedValueEnd(const std::uint8_t* at, const std::uint8_t* end);

}  // namespace norvane
