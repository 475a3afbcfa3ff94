#include "platform/linux/atomic_file.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"

namespace norvane {
namespace {

// Between the target's name and the six characters of mkostemp.
constexpr const char* kTemporaryMark = ".tmp-";

std::error_code lastError() { return {errno, std::generic_category()}; }

[[noreturn]] void fail(const std::string& path, std::error_code error) {
  throw std::system_error(error, path);
}

}  // namespace

std::error_code writeAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(fd, content.data(), content.size());
    if (written >= 0) {
      content.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return lastError();
    }
  }
  return {};
}

void writeFileAtomically(const std::string& path, std::span<const std::byte> content) {
  const auto target = std::filesystem::path(path);
  std::string temporary =
      (target.parent_path() / ("." + target.filename().string() + kTemporaryMark + "XXXXXX"))
          .string();
  const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) fail(path, lastError());

  const std::string_view bytes(reinterpret_cast<const char*>(content.data()), content.size());
  std::error_code error = writeAll(file.get(), bytes);
  if (!error && ::fsync(file.get()) != 0) error = lastError();
  if (!error && ::rename(temporary.c_str(), path.c_str()) != 0) error = lastError();
  if (error) {
    ::unlink(temporary.c_str());
    fail(path, error);
  }

  // The rename is only durable once the directory is.
  const FileDescriptor directory(
      ::open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory || ::fsync(directory.get()) != 0) fail(path, lastError());
}

void sweepTemporaryFiles(const std::string& directory) {
  std::error_code ignored;  // what cannot be listed or removed stays
  for (const auto& entry : std::filesystem::directory_iterator(directory, ignored)) {
    const std::string name = entry.path().filename().string();
    const auto mark = name.rfind(kTemporaryMark);
    if (name.starts_with('.') && mark != std::string::npos && name.size() - mark == 11) {
      std::filesystem::remove(entry.path(), ignored);
    }
  }
}

Bytes readFile(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file) fail(path, lastError());
  Bytes content;
  for (;;) {
    constexpr std::size_t kStep = 64 * 1024;
    const std::size_t size = content.size();
    content.resize(size + kStep);
    const ssize_t got = ::read(file.get(), content.data() + size, kStep);
    content.resize(size + (got > 0 ? static_cast<std::size_t>(got) : 0));
    if (got == 0) return content;
    if (got < 0 && errno != EINTR) fail(path, lastError());
  }
}

}  // namespace norvane
