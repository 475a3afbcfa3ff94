#include "base/secure_memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include <string.h>
#include <sys/mman.h>

namespace norvane {
namespace {

// First touch of fresh memory is what a large payload pays for most. A huge page costs as much as
// the small ones of some 370 KiB, so that a block of several is cheaper in huge pages even when its
// last ones are not used; the kernel aligns it for them. Smaller blocks are malloc's.
constexpr std::size_t kHugePage = 2 * 1024 * 1024;
constexpr std::size_t kHugePagesPay = 2 * kHugePage;

std::size_t wholeHugePages(std::size_t size) { return (size + kHugePage - 1) & ~(kHugePage - 1); }

}  // namespace

void secureWipe(void* memory, std::size_t size) { explicit_bzero(memory, size); }

[[gnu::noinline]] void secureWipeStack() {
  char below[64 * 1024];
  explicit_bzero(below, sizeof below);
}

// malloc, not operator new: where the process replaces operator delete with one that wipes, a block
// would be wiped twice.
void* secureAllocate(std::size_t size) {
  if (size < kHugePagesPay) return std::malloc(size);
  const std::size_t whole = wholeHugePages(size);
  void* const memory = ::mmap(nullptr, whole, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  // Wishes: it works without them.
  (void)::madvise(memory, whole, MADV_HUGEPAGE);
  (void)::madvise(memory, whole, MADV_DONTDUMP);
  return memory;
}

void secureFree(void* memory, std::size_t size, std::size_t used) {
  if (!memory) return;
  secureWipe(memory, used);
  if (size < kHugePagesPay) {
    std::free(memory);
  } else {
    ::munmap(memory, wholeHugePages(size));
  }
}

SecureBuffer::SecureBuffer(SecureBuffer&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)),
      secret_(std::exchange(other.secret_, true)) {}

SecureBuffer& SecureBuffer::operator=(SecureBuffer&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
  std::swap(secret_, other.secret_);
  return *this;
}

SecureBuffer::~SecureBuffer() { secureFree(data_, capacity_, secret_ ? size_ : 0); }

void SecureBuffer::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  void* const memory = secureAllocate(capacity);
  if (!memory) throw std::bad_alloc();
  if (size_ > 0) std::memcpy(memory, data_, size_);
  secureFree(data_, capacity_, size_);
  data_ = static_cast<std::uint8_t*>(memory);
  capacity_ = capacity;
}

void SecureBuffer::grow(std::size_t more) { reserve(std::max(2 * capacity_, size_ + more)); }

}  // namespace norvane
