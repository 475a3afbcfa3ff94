#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/geometry.h"

namespace norvane {

/// A window's frame as the user defaults keep it: x, y, width and height in points, in decimal,
/// separated by blanks.
std::string frameRecord(const NSRect& frame);

/// Nothing when `record` is anything else than four finite numbers, the last two positive.
std::optional<NSRect> parseFrameRecord(std::string_view record);

}  // namespace norvane
