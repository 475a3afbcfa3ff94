#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace norvane {

/// Overwrites `size` bytes with zeros in a way that no optimiser removes.
void secureWipe(void* memory, std::size_t size);

/// Overwrites the stack below the caller, where calls that have returned left copies of what they
/// worked on (saved vector registers among them).
void secureWipeStack();

/// Memory for secrets, aligned for every type; large blocks have pages of their own. Null when
/// there is none.
void* secureAllocate(std::size_t size);
/// Wipes and frees what secureAllocate gave for `size`.
void secureFree(void* memory, std::size_t size);

/// Wipes each block when it is freed, also the ones that a container leaves behind when it grows.
template <class T>
struct WipingAllocator {
  using value_type = T;

  WipingAllocator() = default;
  template <class U>
  explicit(false) WipingAllocator(const WipingAllocator<U>&) {}

  T* allocate(std::size_t count) {
    if (void* memory = secureAllocate(count * sizeof(T))) return static_cast<T*>(memory);
    throw std::bad_alloc();
  }
  void deallocate(T* memory, std::size_t count) { secureFree(memory, count * sizeof(T)); }
  bool operator==(const WipingAllocator&) const = default;
};

/// Bytes that may hold a secret: a message of the UI, a key, a payload.
using Bytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

/// A payload that is written front to back into one growing block. Growing moves pages, not bytes,
/// so that no copy is left behind; what was used is wiped when freed, unless it was declassified.
/// Throws std::bad_alloc.
class SecureBuffer {
 public:
  SecureBuffer() = default;
  /// Sets memory for `capacity` bytes aside; it costs nothing until it is written to.
  explicit SecureBuffer(std::size_t capacity) { reserve(capacity); }
  SecureBuffer(SecureBuffer&& other) noexcept;
  SecureBuffer& operator=(SecureBuffer&& other) noexcept;
  ~SecureBuffer();

  std::uint8_t* data() { return data_; }
  const std::uint8_t* data() const { return data_; }
  std::size_t size() const { return size_; }

  void reserve(std::size_t capacity);
  /// Where the next `most` bytes at most may be written, to be claimed with `advance`.
  std::uint8_t* space(std::size_t most) {
    if (capacity_ - size_ < most) grow(most);
    return data_ + size_;
  }
  void advance(std::size_t size) { size_ += size; }
  /// Says that what it holds now is no secret any more.
  void declassify() { secret_ = false; }
  /// Takes back what is behind the first `size` bytes, and wipes it.
  void truncate(std::size_t size) {
    secureWipe(data_ + size, size_ - size);
    size_ = size;
  }

 private:
  void grow(std::size_t more);

  std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  bool secret_ = true;
};

}  // namespace norvane
