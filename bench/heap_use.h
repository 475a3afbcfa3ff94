#pragma once

#include <cstdint>

namespace norvane {

/// What this thread has asked of the heap. Every allocation of a program that links heap_use.cpp is
/// counted, operator new and the host's own buffers alike.
struct Heap {
  std::int64_t allocations = 0;
  std::int64_t live = 0;
  std::int64_t peak = 0;

  static Heap now();
  static void beginPeak();
};

/// What a stretch of code took of the heap.
class HeapUse {
 public:
  HeapUse() : before_(Heap::now()) { Heap::beginPeak(); }
  double allocations() const {
    return static_cast<double>(Heap::now().allocations - before_.allocations);
  }
  /// The most that was held at once beyond what was held before.
  double peak() const { return static_cast<double>(Heap::now().peak - before_.live); }

 private:
  Heap before_;
};

}  // namespace norvane
