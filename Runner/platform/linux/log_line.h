#pragma once

#include <string>
#include <string_view>

namespace norvane {

/// A log record as one line without its end: control characters as escapes, C1 and the Unicode line
/// separators among them, so that no record can pass for two or move a terminal's cursor.
std::string escapedLogLine(std::string_view text);

}  // namespace norvane
