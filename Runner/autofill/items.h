#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/flutter/flutter_value_view.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {

/// The items of a call: the list of maps under "items" in its arguments, with the message that they
/// are looked at in. A call without such a list, or with one element that is not a map with text
/// keys, has none.
class Items {
 public:
  explicit Items(FlutterMethodCall call);

  auto begin() const { return list_.begin(); }
  auto end() const { return list_.end(); }
  std::size_t messageSize() const { return call_.size(); }

 private:
  FlutterMethodCall call_;
  FlutterListView list_;
};

/// The texts that `item`, a map with text keys, has under `names`; nothing where it has none. One
/// pass over the item.
template <std::size_t N>
std::array<std::optional<std::string_view>, N> textMembers(
    FlutterValueView item, const std::array<std::string_view, N>& names) {
  std::array<std::optional<std::string_view>, N> texts;
  std::array<bool, N> seen{};
  const auto members = item.map();
  for (const auto& [key, value] : *members) {
    const auto name = key.text();
    for (std::size_t i = 0; i < N; ++i) {
      if (seen[i] || name != names[i]) continue;
      seen[i] = true;
      texts[i] = value.text();
    }
  }
  return texts;
}

inline bool isNotEmpty(const std::optional<std::string_view>& text) {
  return text && !text->empty();
}

}  // namespace norvane
