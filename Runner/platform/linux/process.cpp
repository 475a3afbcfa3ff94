#include "platform/linux/process.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace norvane {

bool LinuxDynamicLoader::dlopen(const std::string& path) {
  std::error_code unreadable;
  // The system's loader would wait for a pipe's other end.
  if (!std::filesystem::is_regular_file(path, unreadable)) {
    refusal_ = unreadable ? unreadable.message() : "not a regular file";
    return false;
  }
  refusal_.reset();
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  return ::dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL) != nullptr;
}

std::optional<std::string> LinuxDynamicLoader::dlerror() {
  if (refusal_) return std::exchange(refusal_, std::nullopt);
  const char* text = ::dlerror();
  return text ? std::optional<std::string>(text) : std::nullopt;
}

std::optional<std::string> environmentVariable(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value ? std::optional<std::string>(value) : std::nullopt;
}

void ensureStandardDescriptors() {
  // The lowest free descriptor is the one that is given: open until it is none of the three.
  int fd = 0;
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDWR);
  if (fd > STDERR_FILENO) ::close(fd);
}

void disableCoreDumps() {
  constexpr rlimit kNone{0, 0};
  ::setrlimit(RLIMIT_CORE, &kNone);
}

void surviveFailedWrites() {
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

void forbidDebuggers() { ::prctl(PR_SET_DUMPABLE, 0); }

}  // namespace norvane
