#include <cstdio>

#include "app/main_interface.h"
#include "platform/gtk/gtk_main.h"
#include "platform/linux/command_line.h"

/// The host on the real desktop; Norvane becomes this program when it is not told otherwise.
int main(int argc, char** argv) {
  const norvane::CommandLine commandLine = norvane::parseCommandLine(argc, argv);
  if (commandLine.exitStatus) return *commandLine.exitStatus;
  if (commandLine.headless) {
    std::fputs("Norvane: this program is the real desktop's; start Norvane itself\n", stderr);
    return norvane::kExitUsage;
  }
  return norvane::runGtk(commandLine, norvane::mainInterface());
}
