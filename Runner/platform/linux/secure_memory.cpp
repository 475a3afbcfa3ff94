#include "base/secure_memory.h"

#include <algorithm>
#include <new>
#include <utility>

#include <string.h>
#include <sys/mman.h>

namespace norvane {
namespace {

constexpr std::size_t kPage = 4096;
// First touch of fresh memory is what a large payload pays for most: one huge page costs less than
// the small ones of some 150 KiB. A block of whole huge pages is aligned for them by the kernel.
constexpr std::size_t kHugePage = 2 * 1024 * 1024;
constexpr std::size_t kHugePagesPay = 256 * 1024;

std::size_t roundUp(std::size_t size, std::size_t page) { return (size + page - 1) & ~(page - 1); }

}  // namespace

void secureWipe(void* memory, std::size_t size) { explicit_bzero(memory, size); }

[[gnu::noinline]] void secureWipeStack() {
  char below[64 * 1024];
  explicit_bzero(below, sizeof below);
}

SecureBuffer::SecureBuffer(SecureBuffer&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

SecureBuffer& SecureBuffer::operator=(SecureBuffer&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
  return *this;
}

SecureBuffer::~SecureBuffer() {
  if (!data_) return;
  secureWipe(data_, size_);
  ::munmap(data_, capacity_);
}

void SecureBuffer::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  const bool huge = capacity >= kHugePagesPay;
  const std::size_t whole = roundUp(capacity, huge ? kHugePage : kPage);
  void* memory = data_ ? ::mremap(data_, capacity_, whole, MREMAP_MAYMOVE)
                       : ::mmap(nullptr, whole, PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  data_ = static_cast<std::uint8_t*>(memory);
  capacity_ = whole;
  // Wishes: neither is needed for the buffer to work.
  if (huge) (void)::madvise(data_, whole, MADV_HUGEPAGE);
  (void)::madvise(data_, whole, MADV_DONTDUMP);
}

void SecureBuffer::grow(std::size_t more) { reserve(std::max(2 * capacity_, size_ + more)); }

}  // namespace norvane
