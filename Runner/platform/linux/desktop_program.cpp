#include "platform/linux/desktop_program.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

#include "platform/linux/command_line.h"
#include "platform/linux/process.h"

namespace norvane {

int becomeDesktopProgram(char** argv) {
  std::string why = "there is no display";
  if (environmentVariable("DISPLAY") || environmentVariable("WAYLAND_DISPLAY")) {
    const auto self = std::filesystem::read_symlink("/proc/self/exe");
    const std::string program = self.parent_path() / "norvane-desktop";
    ::execv(program.c_str(), argv);
    why = errno == ENOENT ? "the real desktop, norvane-desktop, is not installed"
                          : program + ": " + std::generic_category().message(errno);
  }
  std::fprintf(stderr, "Norvane: %s; --platform headless runs without one\n", why.c_str());
  return kExitNoDesktop;
}

}  // namespace norvane
