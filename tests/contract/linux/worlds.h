// Whom the suites ask on Linux.

#pragma once

#include "desktop_worlds.h"
#include "simulated_worlds.h"

namespace norvane {

using InputWorlds = testing::Types<SimulatedInput, DesktopInput>;
using PasteboardWorlds = testing::Types<SimulatedPasteboard, DesktopPasteboard>;
using ServicesWorlds = testing::Types<SimulatedServices, DesktopServices>;
using StatusBarWorlds = testing::Types<SimulatedStatusBar, DesktopStatusBar>;
using WindowWorlds = testing::Types<SimulatedWindows, DesktopWindows>;
using WorkspaceWorlds = testing::Types<SimulatedWorkspace, DesktopWorkspace>;

}  // namespace norvane
