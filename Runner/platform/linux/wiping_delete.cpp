// Replaces operator delete for the whole program with one that wipes the block first: texts that
// held a secret are copied by the standard library in more places than can be listed. Not linked
// into builds with a sanitizer, which bring an operator delete of their own.

#include <cstdlib>
#include <new>

#include <malloc.h>

#include "base/secure_memory.h"

namespace {

void wipeAndFree(void* memory) noexcept {
  if (!memory) return;
  norvane::secureWipe(memory, malloc_usable_size(memory));
  std::free(memory);
}

}  // namespace

// The other forms of operator delete end in these two; operator new is malloc or aligned_alloc.
void operator delete(void* memory) noexcept { wipeAndFree(memory); }
void operator delete(void* memory, std::size_t) noexcept { wipeAndFree(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { wipeAndFree(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { wipeAndFree(memory); }
