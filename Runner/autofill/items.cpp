#include "autofill/items.h"

namespace norvane {

Items::Items(FlutterMethodCall call) : call_(std::move(call)) {
  const auto arguments = call_.arguments().textKeyedMap();
  const auto items = arguments ? (*arguments)["items"].list() : std::nullopt;
  if (!items) return;
  first_ = items->first();
  count_ = items->size();
}

}  // namespace norvane
