#include "app/main_interface.h"
#include "platform/headless/headless_main.h"
#include "platform/linux/command_line.h"
#include "platform/linux/desktop_program.h"

/// Chooses the platform; nothing else in the program knows which it is.
int main(int argc, char** argv) {
  const norvane::CommandLine commandLine = norvane::parseCommandLine(argc, argv);
  if (commandLine.exitStatus) return *commandLine.exitStatus;
  if (!commandLine.headless) return norvane::becomeDesktopProgram(argv);
  return norvane::runHeadless(commandLine, norvane::mainInterface());
}
