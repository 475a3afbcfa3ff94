#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/flutter/flutter_value_reader.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {

/// The names of members, and the texts that an item has under them; nothing where it has none.
template <std::size_t N>
using MemberNames = std::array<std::string_view, N>;
template <std::size_t N>
using MemberTexts = std::array<std::optional<std::string_view>, N>;

/// The items of a call: the list of maps with text keys under "items" in its arguments, with the
/// message that they are looked at in. A call without such a list has none.
class Items {
 public:
  explicit Items(FlutterMethodCall call);

  /// Hands the texts that each item has under `kNames` to `visit`, in the order of the list. False
  /// when an element is not a map with text keys: then there are no items, and what has been made
  /// of those before it is to be discarded. One walk over the message.
  template <const auto& kNames, class Visit>
  [[nodiscard]] bool visit(Visit visit) const {
    FlutterValueReader reader(first_);
    for (std::size_t left = count_; left > 0; --left) {
      MemberTexts<kNames.size()> texts;
      if (!readItem<kNames>(reader, texts)) return false;
      visit(texts);
    }
    return true;
  }
  std::size_t messageSize() const { return call_.size(); }

 private:
  /// Of several members with one name, the first counts.
  template <const auto& kNames>
  static bool readItem(FlutterValueReader& reader, MemberTexts<kNames.size()>& texts) {
    const auto members = reader.map();
    if (!members) return false;
    std::array<bool, kNames.size()> seen{};
    for (std::size_t left = *members; left > 0; --left) {
      const auto name = reader.text();
      if (!name) return false;
      const std::size_t which = placeOf<kNames>(*name, std::make_index_sequence<kNames.size()>());
      if (which == kNames.size() || std::exchange(seen[which], true)) {
        reader.skip();
      } else {
        texts[which] = reader.text();
      }
    }
    return true;
  }

  /// The names are known to the compiler, and so are their lengths where it compares them.
  template <const auto& kNames, std::size_t... I>
  static std::size_t placeOf(std::string_view name, std::index_sequence<I...>) {
    std::size_t place = sizeof...(I);
    (void)((name == kNames[I] && (place = I, true)) || ...);
    return place;
  }

  FlutterMethodCall call_;
  FlutterValueView first_;
  std::size_t count_ = 0;
};

inline bool isNotEmpty(const std::optional<std::string_view>& text) {
  return text && !text->empty();
}

}  // namespace norvane
