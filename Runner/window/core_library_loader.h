#pragma once

#include <string>
#include <vector>

namespace norvane {

/// The paths at which the core library is looked for, in order.
std::vector<std::string> candidatePaths();

/// Loads the core library from the first candidate that loads; its symbols are then found by every
/// later lookup in the process. Ends the process when none does. Main thread.
void loadRustLibrary();

}  // namespace norvane
