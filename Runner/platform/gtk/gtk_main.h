#pragma once

#include "platform/linux/command_line.h"
#include "platform/ns_application.h"

namespace norvane {

/// Runs the application on the display until it is quit, or hands its links to the instance that
/// runs already. Returns the exit status.
int runGtk(const CommandLine& commandLine, const MainInterface& mainInterface);

}  // namespace norvane
