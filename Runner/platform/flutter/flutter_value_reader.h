#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/flutter/flutter_value_view.h"
#include "platform/flutter/message_walker.h"

namespace norvane {

/// Moves over the values of a checked message, from one to the next, into maps and out of them.
/// Views walk over a map once to read it and once more to step behind it; this looks at everything
/// once. Who reads counts the values: behind the last one there is nothing to ask for.
class FlutterValueReader {
 public:
  explicit FlutterValueReader(FlutterValueView first) : at_(first.at_) {}

  /// The value that comes next.
  FlutterValueView here() const { return FlutterValueView(at_); }

  /// The text that comes next, and moves behind it. Nothing when it is another value, which is left
  /// behind all the same.
  std::optional<std::string_view> text() {
    if (here().type() != FlutterType::text) {
      skip();
      return std::nullopt;
    }
    const std::size_t count = size();
    const auto* const data = reinterpret_cast<const char*>(at_);
    at_ += count;
    return std::string_view(data, count);
  }

  /// The number of entries of the map that comes next, and moves to the first of their keys and
  /// values. Nothing when it is another value, which stays the next one.
  std::optional<std::size_t> map() {
    if (here().type() != FlutterType::map) return std::nullopt;
    return size();
  }

  /// Moves behind the value that comes next.
  void skip();

 private:
  /// Moves behind the type byte and the size that follows it.
  std::size_t size() {
    MessageWalker<false> walker(at_ + 1);
    std::size_t count = 0;
    walker.size(count);
    at_ = walker.position();
    return count;
  }

  const std::uint8_t* at_;
};

}  // namespace norvane
