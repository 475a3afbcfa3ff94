// The log of the real desktop, with a journal, with a terminal, and without either.

#include "platform/gtk/journal_log.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <pty.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"

namespace norvane {
namespace {

constexpr const char* kRecord = "[Norvane] open norvane://a\nPRIORITY=0\nMESSAGE=b\x1B[2J";
constexpr std::string_view kLine = "[Norvane] open norvane://a\\nPRIORITY=0\\nMESSAGE=b\\x1b[2J";

/// What `file` has for a reader, in one piece; `file` is non-blocking.
std::string got(int file) {
  char text[4096];
  const ssize_t size = ::read(file, text, sizeof text);
  return {text, size > 0 ? static_cast<std::size_t>(size) : 0};
}

/// In a process of its own whose /run nobody else sees: writes the record where a journal listens,
/// and tells `out` what arrived there and on the terminal or file that is its standard error.
[[noreturn]] void writeWithJournal(int out, int standardError, int readable) {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/systemd/journal/socket"};
  const int journal = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
  if (::unshare(CLONE_NEWNS) != 0 ||
      ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      ::mount("tmpfs", "/run", "tmpfs", 0, nullptr) != 0) {
    _exit(2);
  }
  ::mkdir("/run/systemd", 0700);
  ::mkdir("/run/systemd/journal", 0700);
  if (::bind(journal, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) _exit(3);
  ::dup2(standardError, STDERR_FILENO);
  JournalLog().write(kRecord);
  const std::string told = got(journal) + "|" + got(readable);
  _exit(::write(out, told.data(), told.size()) == static_cast<ssize_t>(told.size()) ? 0 : 4);
}

class JournalLogTest : public testing::Test {
 protected:
  static constexpr int kUnprivileged = 2;

  void SetUp() override {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_NONBLOCK), 0);
    pipeOut_ = FileDescriptor(ends[0]);
    pipeIn_ = FileDescriptor(ends[1]);
    ASSERT_EQ(::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr), 0);
    terminal_ = FileDescriptor(ends[0]);
    ::fcntl(terminal_.get(), F_SETFL, O_NONBLOCK);
    program_ = FileDescriptor(ends[1]);
  }

  /// Exit status of the process, and what it told.
  int withJournal(const FileDescriptor& standardError, const FileDescriptor& readable,
                  std::string& told) {
    int ends[2];
    if (::pipe(ends) != 0) return -1;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) writeWithJournal(writing.get(), standardError.get(), readable.get());
    writing = {};
    int status = -1;
    ::waitpid(child, &status, 0);
    told = got(reading.get());
    return WEXITSTATUS(status);
  }

  FileDescriptor pipeOut_, pipeIn_, terminal_, program_;
};

TEST_F(JournalLogTest, ARecordIsOneEntryOfTheJournalAndSeenOnATerminal) {
  std::string told;
  const int status = withJournal(pipeIn_, pipeOut_, told);
  if (status == kUnprivileged) GTEST_SKIP() << "needs a mount namespace of its own";
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(told.ends_with("|")) << "twice, where standard error may be the journal: " << told;
  EXPECT_NE(told.find("SYSLOG_IDENTIFIER=norvane\n"), std::string::npos) << told;
  EXPECT_NE(told.find(kLine), std::string::npos) << told;
  EXPECT_EQ(told.find("\nPRIORITY=0"), std::string::npos) << told;

  EXPECT_EQ(withJournal(program_, terminal_, told), 0);
  EXPECT_NE(told.find("SYSLOG_IDENTIFIER"), std::string::npos) << told;
  EXPECT_TRUE(told.ends_with("|" + std::string(kLine) + "\r\n")) << told;
}

TEST_F(JournalLogTest, WithoutAJournalRecordsGoToStandardError) {
  if (::access("/run/systemd/journal/socket", F_OK) == 0) GTEST_SKIP() << "there is a journal";
  const FileDescriptor kept(::dup(STDERR_FILENO));
  ::dup2(pipeIn_.get(), STDERR_FILENO);
  JournalLog().write(kRecord);
  ::dup2(kept.get(), STDERR_FILENO);
  EXPECT_EQ(got(pipeOut_.get()), std::string(kLine) + '\n');
}

}  // namespace
}  // namespace norvane
