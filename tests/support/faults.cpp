#include "support/faults.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>

namespace norvane {

SystemFault systemFault;
Fault memoryFault;

namespace {

bool callFails(bool interruptible = false, bool writes = false) {
  if (systemFault.error == EINTR && !interruptible) return false;
  if (systemFault.error == SystemFault::kShortWrite && !writes) return false;
  if (!systemFault.strikes()) return false;
  errno = systemFault.error;
  return true;
}

bool memoryFails() {
  if (!memoryFault.strikes()) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace
}  // namespace norvane

using norvane::callFails;
using norvane::memoryFails;

// The linker sends the calls of the program here (--wrap, see tests/CMakeLists.txt).
extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_mkostemp(char* path, int flags);
int __real_mkdir(const char* path, mode_t mode);
int __real_fsync(int fd);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
int __real_access(const char* path, int mode);
ssize_t __real_read(int fd, void* data, size_t size);
ssize_t __real_write(int fd, const void* data, size_t size);
void* __real_malloc(size_t size);
void* __real_mmap(void* at, size_t size, int protection, int flags, int fd, off_t offset);

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return callFails(true) ? -1 : __real_open(path, flags, mode);
}
int __wrap_mkostemp(char* path, int flags) {
  if (!callFails(true)) return __real_mkostemp(path, flags);
  std::memset(path + std::strlen(path) - 6, 'z', 6);  // as the real one does before it fails
  return -1;
}
int __wrap_mkdir(const char* path, mode_t mode) {
  return callFails() ? -1 : __real_mkdir(path, mode);
}
int __wrap_fsync(int fd) { return callFails(true) ? -1 : __real_fsync(fd); }
int __wrap_rename(const char* from, const char* to) {
  return callFails() ? -1 : __real_rename(from, to);
}
int __wrap_unlink(const char* path) { return callFails() ? -1 : __real_unlink(path); }
int __wrap_access(const char* path, int mode) {
  return callFails() ? -1 : __real_access(path, mode);
}
ssize_t __wrap_read(int fd, void* data, size_t size) {
  return callFails(true) ? -1 : __real_read(fd, data, size);
}
ssize_t __wrap_write(int fd, const void* data, size_t size) {
  if (!callFails(true, true)) return __real_write(fd, data, size);
  if (errno != norvane::SystemFault::kShortWrite) return -1;
  return __real_write(fd, data, (size + 1) / 2);
}
void* __wrap_malloc(size_t size) { return memoryFails() ? nullptr : __real_malloc(size); }
void* __wrap_mmap(void* at, size_t size, int protection, int flags, int fd, off_t offset) {
  return memoryFails() ? MAP_FAILED : __real_mmap(at, size, protection, flags, fd, offset);
}

}  // extern "C"

void* operator new(std::size_t size) {
  if (void* memory = memoryFails() ? nullptr : __real_malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memoryFails() ? nullptr : __real_malloc(size ? size : 1);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
