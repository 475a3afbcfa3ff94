#include "base/secure_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include <string.h>
#include <sys/mman.h>

namespace norvane {
namespace {

constexpr std::size_t kPage = 4096;
// First touch of fresh memory is what a large payload pays for most: a huge page costs less than
// the small ones of some 370 KiB, and a payload is seldom as large as the memory set aside for it.
// A block of whole huge pages is aligned for them by the kernel.
constexpr std::size_t kHugePage = 2 * 1024 * 1024;
constexpr std::size_t kHugePagesPay = 1024 * 1024;

std::size_t roundUp(std::size_t size, std::size_t page) { return (size + page - 1) & ~(page - 1); }

/// Whole pages for `size` bytes.
std::size_t wholePages(std::size_t size) {
  return roundUp(size, size >= kHugePagesPay ? kHugePage : kPage);
}

/// Maps `size` bytes of whole pages, which hold the `oldSize` bytes of `old` if there are any. Null
/// when there is no memory.
void* mapPages(std::size_t size, void* old = nullptr, std::size_t oldSize = 0) {
  void* const memory = old ? ::mremap(old, oldSize, size, MREMAP_MAYMOVE)
                           : ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                                    MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  // Wishes: it works without them.
  if (size >= kHugePage) (void)::madvise(memory, size, MADV_HUGEPAGE);
  (void)::madvise(memory, size, MADV_DONTDUMP);
  return memory;
}

}  // namespace

void secureWipe(void* memory, std::size_t size) { explicit_bzero(memory, size); }

[[gnu::noinline]] void secureWipeStack() {
  char below[64 * 1024];
  explicit_bzero(below, sizeof below);
}

// malloc for the others, not operator new: where the process replaces operator delete with one that
// wipes, they would be wiped twice.
void* secureAllocate(std::size_t size) {
  return size >= kHugePagesPay ? mapPages(wholePages(size)) : std::malloc(size);
}

void secureFree(void* memory, std::size_t size) {
  secureWipe(memory, size);
  if (size >= kHugePagesPay) {
    ::munmap(memory, wholePages(size));
  } else {
    std::free(memory);
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

SecureBuffer::~SecureBuffer() {
  if (!data_) return;
  if (secret_) secureWipe(data_, size_);
  ::munmap(data_, capacity_);
}

void SecureBuffer::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  const std::size_t whole = wholePages(capacity);
  void* const memory = mapPages(whole, data_, capacity_);
  if (!memory) throw std::bad_alloc();
  data_ = static_cast<std::uint8_t*>(memory);
  capacity_ = whole;
}

void SecureBuffer::grow(std::size_t more) { reserve(std::max(2 * capacity_, size_ + more)); }

}  // namespace norvane
