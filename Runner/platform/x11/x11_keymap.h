#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>

struct _XkbDesc;

namespace norvane {

/// The keyboard's map as the X server has it when this is made; empty when the server does not
/// tell.
class X11Keymap {
 public:
  X11Keymap();

  /// The X key code of the key at a place; 0 when this keyboard has none there.
  unsigned keyCodeAt(std::string_view place) const;
  /// The modifier bits that a key with the first of these symbols that there is sets; 0 without
  /// one.
  unsigned modifiersOf(std::initializer_list<unsigned long> symbols) const;
  /// Layouts, called groups, are counted from 0.
  int groupCount() const;
  /// Whether that layout has the Latin letters, but for the few that some Latin layouts leave out.
  bool isLatin(int group) const;

 private:
  struct Deleter {
    void operator()(_XkbDesc* map) const;
  };
  std::unique_ptr<_XkbDesc, Deleter> map_;
};

}  // namespace norvane
