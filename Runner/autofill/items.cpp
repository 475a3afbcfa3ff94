#include "autofill/items.h"

#include <utility>

namespace norvane {
namespace {

std::vector<FlutterValueView> itemsOf(FlutterValueView arguments) {
  std::vector<FlutterValueView> maps;
  const auto map = arguments.textKeyedMap();
  if (!map) return maps;
  const auto items = (*map)["items"].list();
  if (!items) return maps;
  maps.reserve(items->size());
  for (const FlutterValueView item : *items) {
    if (!item.textKeyedMap()) return {};
    maps.push_back(item);
  }
  return maps;
}

}  // namespace

Items::Items(FlutterMethodCall call) : call_(std::move(call)), maps_(itemsOf(call_.arguments())) {}

}  // namespace norvane
