#pragma once

#include <cstdint>

namespace norvane {

/// A result code of the system; 0 is success. Values are the home system's.
using OSStatus = std::int32_t;
inline constexpr OSStatus noErr = 0;

}  // namespace norvane
