#pragma once

#include <string>
#include <string_view>

namespace norvane {

/// Whether `text` is well-formed UTF-8 (Unicode 15, table 3-7): no overlong form, no surrogate,
/// nothing above U+10FFFF, nothing cut off. NUL is a character like any other.
bool isWellFormedUtf8(std::string_view text);

/// A text of the system's (a message, a path, what holds one of them) as UTF-8, which all texts
/// here are: as it is where it is that already, else read in the locale's encoding, else with
/// U+FFFD in the place of each byte that is ill-formed. Any thread.
std::string utf8Of(std::string_view foreign);

/// The same for a text that is Latin-1 unless it is UTF-8.
std::string utf8OfLatin1(std::string_view foreign);

}  // namespace norvane
