#pragma once

namespace norvane {

/// Whether the window manager in charge keeps the Super key for itself: it grabs the key, and
/// combinations with it reach nobody, though the server grants them. Main thread.
bool windowManagerKeepsSuper();

}  // namespace norvane
