#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/flutter/flutter_value_view.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {

/// The items of a call: the list of maps under "items" in its arguments, with the message that they
/// are looked at in. A call without such a list, or with one element that is not a map with text
/// keys, has none.
class Items {
 public:
  explicit Items(FlutterMethodCall call);

  auto begin() const { return maps_.begin(); }
  auto end() const { return maps_.end(); }
  std::size_t messageSize() const { return call_.size(); }

 private:
  FlutterMethodCall call_;
  std::vector<FlutterValueView> maps_;  // because to step over a map is to walk through it
};

/// The texts that `item`, a map with text keys, has under `names`; nothing where it has none. One
/// pass over the item, no further than the last of them.
template <std::size_t N>
std::array<std::optional<std::string_view>, N> textMembers(
    FlutterValueView item, const std::array<std::string_view, N>& names) {
  std::array<std::optional<std::string_view>, N> texts;
  std::array<bool, N> seen{};
  std::size_t missing = N;
  const auto members = item.map();
  for (const auto& [key, value] : *members) {
    const auto name = key.text();
    for (std::size_t i = 0; i < N; ++i) {
      if (seen[i] || name != names[i]) continue;
      seen[i] = true;
      texts[i] = value.text();
      if (--missing == 0) return texts;
    }
  }
  return texts;
}

inline bool isNotEmpty(const std::optional<std::string_view>& text) {
  return text && !text->empty();
}

}  // namespace norvane
