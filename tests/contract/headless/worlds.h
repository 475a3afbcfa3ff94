// Whom the suites ask where there is no desktop.

#pragma once

#include "simulated_worlds.h"

namespace norvane {

using InputWorlds = testing::Types<SimulatedInput>;
using PasteboardWorlds = testing::Types<SimulatedPasteboard>;
using ServicesWorlds = testing::Types<SimulatedServices>;
using StatusBarWorlds = testing::Types<SimulatedStatusBar>;
using WindowWorlds = testing::Types<SimulatedWindows>;
using WorkspaceWorlds = testing::Types<SimulatedWorkspace>;

}  // namespace norvane
