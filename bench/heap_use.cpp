#include "heap_use.h"

#include <algorithm>
#include <cstddef>

#include <malloc.h>

// glibc's own names for what is replaced here.
extern "C" {
void* __libc_malloc(std::size_t size);
void __libc_free(void* memory);
}

namespace {

thread_local norvane::Heap heap;

}  // namespace

extern "C" void* malloc(std::size_t size) noexcept {
  void* memory = __libc_malloc(size);
  ++heap.allocations;
  heap.live += static_cast<std::int64_t>(malloc_usable_size(memory));
  heap.peak = std::max(heap.peak, heap.live);
  return memory;
}

extern "C" void free(void* memory) noexcept {
  heap.live -= static_cast<std::int64_t>(malloc_usable_size(memory));
  __libc_free(memory);
}

namespace norvane {

Heap Heap::now() { return heap; }

void Heap::beginPeak() { heap.peak = heap.live; }

}  // namespace norvane
