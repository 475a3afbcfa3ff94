#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

namespace norvane {

/// Overwrites `size` bytes with zeros in a way that no optimiser removes.
void secureWipe(void* memory, std::size_t size);

/// Wipes each block when it is freed, also the ones that a container leaves behind when it grows.
template <class T>
struct WipingAllocator {
  using value_type = T;

  WipingAllocator() = default;
  template <class U>
  explicit(false) WipingAllocator(const WipingAllocator<U>&) {}

  // malloc, not operator new: where the process replaces operator delete with one that wipes, the
  // block would be wiped twice.
  T* allocate(std::size_t count) {
    if (void* memory = std::malloc(count * sizeof(T))) return static_cast<T*>(memory);
    throw std::bad_alloc();
  }
  void deallocate(T* memory, std::size_t count) {
    secureWipe(memory, count * sizeof(T));
    std::free(memory);
  }
  bool operator==(const WipingAllocator&) const = default;
};

/// Bytes that may hold a secret: a message of the UI, a key, a payload.
using Bytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

}  // namespace norvane
