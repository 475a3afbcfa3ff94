#pragma once

#include <string>

#include "platform/linux/pixbuf_graphics.h"

namespace norvane {

/// `text` on a transparent square of `side` pixels, as large as it fits; empty when it cannot be
/// drawn. Main thread.
Pixbuf drawnText(const std::string& text, int side);

}  // namespace norvane
