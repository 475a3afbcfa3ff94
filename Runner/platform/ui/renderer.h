#pragma once

namespace norvane {

/// Has the UI toolkit's library draw in software where this display has no OpenGL, and says so in
/// the log; what FLUTTER_LINUX_RENDERER says in the environment stays. Before the library is
/// opened, on the main thread.
void chooseRenderer();

}  // namespace norvane
