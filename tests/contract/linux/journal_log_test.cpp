// The log of the real desktop: without a journal, with one, and where standard error is the
// journal.

#include "platform/session/journal_log.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {
namespace {

/// Ends a process of its own, whose /run nobody else sees, with whether records go where they
/// ought.
[[noreturn]] void logEverywhere() {
  const std::string line = "open norvane://a\\nPRIORITY=0\\nMESSAGE=b\\x1b[2J";
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/systemd/journal/socket"};
  const int journal = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
  sockaddr_un streamAddress{.sun_family = AF_UNIX, .sun_path = "/run/systemd/journal/stdout"};
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  const int stream = ::socket(AF_UNIX, SOCK_STREAM, 0);
  int pipe[2];
  if (::unshare(CLONE_NEWNS) != 0 || ::mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      ::mount("tmpfs", "/run", "tmpfs", 0, nullptr) != 0 || ::pipe2(pipe, O_NONBLOCK) != 0) {
    std::_Exit(1);
  }
  const auto logged = [](int standardError, int read) {
    ::dup2(standardError, STDERR_FILENO);
    JournalLog().write("open norvane://a\nPRIORITY=0\nMESSAGE=b\x1B[2J");
    char text[4096];
    const ssize_t size = ::read(read, text, sizeof text);
    return std::string(text, size > 0 ? static_cast<std::size_t>(size) : 0);
  };
  bool ok = logged(pipe[1], pipe[0]) == line + '\n';
  std::filesystem::create_directories("/run/systemd/journal");
  ok = ok && ::bind(journal, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
       ::bind(listener, reinterpret_cast<sockaddr*>(&streamAddress), sizeof address) == 0 &&
       ::listen(listener, 1) == 0 &&
       ::connect(stream, reinterpret_cast<sockaddr*>(&streamAddress), sizeof address) == 0;
  const int read = ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK);
  const std::string entry = logged(pipe[1], journal);
  ok = ok && entry.find(line) != std::string::npos &&
       entry.find("SYSLOG_IDENTIFIER=norvane\n") != std::string::npos;
  char text[4096];
  ok = ok && ::read(pipe[0], text, sizeof text) == static_cast<ssize_t>(line.size() + 1);
  ok = ok && logged(stream, read).empty() && ::read(journal, text, 1) == 1;
  std::_Exit(ok ? 0 : 2);
}

TEST(JournalLogTest, ARecordIsOneLineInTheJournalAndOnStandardErrorUnlessThatIsTheJournal) {
  if (std::system("unshare --mount true 2>/dev/null") != 0) {
    GTEST_SKIP() << "this process cannot have a /run of its own";
  }
  EXPECT_EXIT(logEverywhere(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace norvane
