#include "platform/x11/x11_keymap.h"

#include <algorithm>
#include <bitset>
#include <cstring>

#include <X11/XKBlib.h>
#include <X11/keysym.h>
#include <gdk/gdkx.h>

namespace norvane {

void X11Keymap::Deleter::operator()(_XkbDesc* map) const {
  XkbFreeKeyboard(map, XkbAllComponentsMask, True);
}

X11Keymap::X11Keymap() {
  Display* display = gdk_x11_get_default_xdisplay();
  map_.reset(
      XkbGetMap(display, XkbKeyTypesMask | XkbKeySymsMask | XkbModifierMapMask, XkbUseCoreKbd));
  if (map_ && XkbGetNames(display, XkbKeyNamesMask, map_.get()) != Success) map_.reset();
}

unsigned X11Keymap::keyCodeAt(std::string_view place) const {
  if (!map_) return 0;
  for (unsigned code = map_->min_key_code; code <= map_->max_key_code; ++code) {
    const char* name = map_->names->keys[code].name;
    if (place == std::string_view(name, ::strnlen(name, XkbKeyNameLength))) return code;
  }
  return 0;
}

unsigned X11Keymap::modifiersOf(std::initializer_list<unsigned long> symbols) const {
  if (!map_) return 0;
  for (const unsigned long symbol : symbols) {
    for (unsigned code = map_->min_key_code; code <= map_->max_key_code; ++code) {
      const unsigned modifiers = map_->map->modmap[code];
      if (modifiers == 0 || XkbKeyNumGroups(map_, code) == 0) continue;
      if (XkbKeySymEntry(map_, code, 0, 0) == symbol) return modifiers;
    }
  }
  return 0;
}

int X11Keymap::groupCount() const {
  int count = 0;
  if (!map_) return count;
  for (unsigned code = map_->min_key_code; code <= map_->max_key_code; ++code) {
    count = std::max<int>(count, XkbKeyNumGroups(map_, code));
  }
  return count;
}

bool X11Keymap::isLatin(int group) const {
  std::bitset<26> letters;
  if (!map_) return false;
  for (unsigned code = map_->min_key_code; code <= map_->max_key_code; ++code) {
    if (group >= XkbKeyNumGroups(map_, code)) continue;
    const KeySym symbol = XkbKeySymEntry(map_, code, 0, group);
    if (symbol >= XK_a && symbol <= XK_z) letters.set(symbol - XK_a);
  }
  constexpr std::size_t kEnough = 20;
  return letters.count() >= kEnough;
}

}  // namespace norvane
