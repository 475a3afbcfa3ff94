#pragma once

namespace norvane {

/// From now on, ends the process with kExitNoDesktop and a record in the log when the display goes
/// away: the toolkit's windows cannot outlive it. What is being written is left whole by whatever
/// moment the process ends at. After the toolkit was initialised.
void endWithDisplay();

}  // namespace norvane
