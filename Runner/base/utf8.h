#pragma once

#include <string_view>

namespace norvane {

/// Whether `text` is well-formed UTF-8 (Unicode 15, table 3-7): no overlong form, no surrogate,
/// nothing above U+10FFFF, nothing cut off. NUL is a character like any other.
bool isWellFormedUtf8(std::string_view text);

}  // namespace norvane
