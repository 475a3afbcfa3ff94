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

/// Memory for secrets, aligned for every type; null when there is none.
void* secureAllocate(std::size_t size);
/// Frees what secureAllocate gave for `size`, null included, once the first `used` bytes are wiped.
void secureFree(void* memory, std::size_t size, std::size_t used);

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
  void deallocate(T* memory, std::size_t count) {
    secureFree(memory, count * sizeof(T), count * sizeof(T));
  }
  bool operator==(const WipingAllocator&) const = default;
};

/// Bytes that may hold a secret: a message of the UI, a key, a payload.
using Bytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

/// A payload that is written front to back into one growing block. What was used of a block is
/// wiped when it is freed or outgrown, unless it was declassified. Throws std::bad_alloc.
class SecureBuffer {
 public:
  SecureBuffer() = default;
  /// Sets memory for `capacity` bytes aside; it costs little until it is written to.
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
