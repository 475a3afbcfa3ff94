#include "autofill/items.h"

#include <utility>

namespace norvane {
namespace {

FlutterListView itemsOf(FlutterValueView arguments) {
  const FlutterListView none({}, 0);
  const auto map = arguments.textKeyedMap();
  if (!map) return none;
  const auto items = (*map)["items"].list();
  if (!items) return none;
  for (const FlutterValueView item : *items) {
    if (!item.textKeyedMap()) return none;
  }
  return *items;
}

}  // namespace

Items::Items(FlutterMethodCall call) : call_(std::move(call)), list_(itemsOf(call_.arguments())) {}

}  // namespace norvane
