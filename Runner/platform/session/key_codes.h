#pragma once

#include <cstdint>
#include <string_view>

namespace norvane {

/// A key of the home system's keyboard on this one.
struct PhysicalKey {
  std::string_view place;   ///< the name that XKB gives to the key at that place, whatever is on it
  std::string_view symbol;  ///< the X name of what is on it in the US layout
};

/// Null for virtual key codes other than the typewriter keys of an ANSI keyboard.
const PhysicalKey* physicalKey(std::uint32_t virtualKeyCode);

}  // namespace norvane
