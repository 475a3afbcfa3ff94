#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/geometry.h"

namespace norvane {

/// A window's frame as the user defaults keep it: x, y, width and height in points, in decimal,
/// separated by blanks.
std::string frameRecord(const NSRect& frame);

/// Reads also the home system's own records, which go on with the screen's frame and end in a
/// blank. Nothing when `record` is anything else than four or eight finite numbers, width and
/// height positive.
std::optional<NSRect> parseFrameRecord(std::string_view record);

}  // namespace norvane
