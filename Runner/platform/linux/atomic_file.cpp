#include "platform/linux/atomic_file.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"
#include "platform/log.h"

namespace norvane {
namespace {

// Between the target's name and the six characters of mkostemp.
constexpr const char* kTemporaryMark = ".tmp-";

/// Makes a call again for as long as signals interrupt it.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

std::error_code lastError() { return {errno, std::generic_category()}; }

FileDescriptor openFile(const char* path, int flags) {
  return FileDescriptor(uninterrupted([&] { return ::open(path, flags); }));
}

int sync(const FileDescriptor& file) {
  return uninterrupted([&] { return ::fsync(file.get()); });
}

[[noreturn]] void fail(const std::string& path, std::error_code error) {
  throw std::system_error(error, path);
}

/// What was renamed or removed is so for good only once its directory has been synced.
void syncDirectoryOf(const std::string& path) {
  const FileDescriptor directory = openFile(std::filesystem::path(path).parent_path().c_str(),
                                            O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory && sync(directory) == 0) return;
  const std::error_code error = lastError();
  for (const int noSuchThing : {EINVAL, ENOTSUP, EBADF}) {
    if (error.value() == noSuchThing) return;
  }
  NSLog("[Norvane] a loss of power may undo the change of " + path + ": " + error.message());
}

}  // namespace

std::error_code writeAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written =
        uninterrupted([&] { return ::write(fd, content.data(), content.size()); });
    if (written < 0) return lastError();
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

void writeFileAtomically(const std::string& path, std::span<const std::byte> content) {
  const auto target = std::filesystem::path(path);
  const std::string pattern =
      (target.parent_path() / ("." + target.filename().string() + kTemporaryMark + "XXXXXX"))
          .string();
  std::string temporary;
  const FileDescriptor file(uninterrupted([&] {
    temporary = pattern;
    return ::mkostemp(temporary.data(), O_CLOEXEC);
  }));
  if (!file) fail(path, lastError());

  const std::string_view bytes(reinterpret_cast<const char*>(content.data()), content.size());
  std::error_code error = writeAll(file.get(), bytes);
  if (!error && sync(file) != 0) error = lastError();
  if (!error && ::rename(temporary.c_str(), path.c_str()) != 0) error = lastError();
  if (error) {
    ::unlink(temporary.c_str());
    fail(path, error);
  }

  syncDirectoryOf(path);
}

bool removeForGood(const std::string& path) {
  if (::unlink(path.c_str()) != 0) {
    if (errno == ENOENT) return false;
    if (errno != EISDIR) fail(path, lastError());
    std::error_code error;
    std::filesystem::remove_all(path, error);
    if (error) fail(path, error);
  }
  syncDirectoryOf(path);
  return true;
}

void sweepTemporaryFiles(const std::string& directory) {
  std::error_code ignored;  // what cannot be listed or removed stays
  std::filesystem::directory_iterator entry(directory, ignored);
  for (; entry != std::filesystem::directory_iterator(); entry.increment(ignored)) {
    const std::string name = entry->path().filename().string();
    const auto mark = name.rfind(kTemporaryMark);
    if (name.starts_with('.') && mark != std::string::npos && name.size() - mark == 11) {
      std::filesystem::remove(entry->path(), ignored);
    }
  }
}

Bytes readFile(const std::string& path) {
  const FileDescriptor file = openFile(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (!file) fail(path, lastError());
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) fail(path, lastError());
  Bytes content;
  // One byte more than it has, whose absence is the end; what has no size grows as it is read.
  content.reserve(std::max<std::size_t>(static_cast<std::size_t>(status.st_size), 4095) + 1);
  for (;;) {
    const std::size_t size = content.size();
    content.resize(std::max(content.capacity(), size + 1));
    const ssize_t got = uninterrupted(
        [&] { return ::read(file.get(), content.data() + size, content.size() - size); });
    content.resize(size + (got > 0 ? static_cast<std::size_t>(got) : 0));
    if (got == 0) return content;
    if (got < 0) fail(path, lastError());
  }
}

}  // namespace norvane
