#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace norvane {

class FlutterValue;
using FlutterList = std::vector<FlutterValue>;
/// Entries in the order in which they are written.
using FlutterMap = std::vector<std::pair<FlutterValue, FlutterValue>>;

/// A value that the host sends to a UI; it owns what it holds. Values that come from a UI are
/// looked at in place (`FlutterValueView`). Texts are UTF-8.
class FlutterValue {
 public:
  using Alternatives =
      std::variant<std::monostate, bool, std::int32_t, std::int64_t, double, std::string,
                   std::vector<std::uint8_t>, std::vector<std::int32_t>, std::vector<std::int64_t>,
                   std::vector<float>, std::vector<double>, FlutterList, FlutterMap>;

  /// No value (null).
  FlutterValue() = default;
  FlutterValue(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)

  FlutterValue(FlutterValue&&) = default;
  FlutterValue& operator=(FlutterValue&&) = default;
  // Not the variant's own copy: where memory runs out on the way, the one of libstdc++ 12 destroys
  // what it has not made yet.
  FlutterValue(const FlutterValue& other) {
    std::visit([this](const auto& held) { value_ = held; }, other.value_);
  }
  FlutterValue& operator=(const FlutterValue& other) { return *this = FlutterValue(other); }
  ~FlutterValue() = default;

  // Constrained, because a pointer would otherwise turn into a boolean.
  FlutterValue(std::same_as<bool> auto value) : value_(value) {}      // NOLINT
  FlutterValue(const char* text) : value_(std::string(text)) {}       // NOLINT
  FlutterValue(std::string_view text) : value_(std::string(text)) {}  // NOLINT

  template <class T>
  requires(!std::same_as<std::remove_cvref_t<T>, FlutterValue> &&
           !std::same_as<std::remove_cvref_t<T>, bool> && !std::is_pointer_v<std::decay_t<T>> &&
           std::constructible_from<Alternatives, std::in_place_type_t<std::remove_cvref_t<T>>, T>)
      FlutterValue(T&& value)  // NOLINT(google-explicit-constructor)
      : value_(std::in_place_type<std::remove_cvref_t<T>>, std::forward<T>(value)) {}

  const Alternatives& alternatives() const { return value_; }

 private:
  Alternatives value_;
};

}  // namespace norvane
