#pragma once

#include "platform/linux/command_line.h"
#include "platform/ns_application.h"

namespace norvane {

/// The application's main loop on the headless desktop; returns the process's exit status.
int runHeadless(const CommandLine& commandLine, const MainInterface& mainInterface);

}  // namespace norvane
