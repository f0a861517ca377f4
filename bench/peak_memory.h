// Counts what a benchmark allocates with operator new: include in exactly one source of a benchmark, which thereby
// replaces the global operators. Counting is off except inside PeakBytes, where it costs each contender the same.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

extern "C" std::size_t malloc_usable_size(void*);

namespace kvbench {

struct MemoryCount {
  bool on = false;
  std::ptrdiff_t live = 0;
  std::ptrdiff_t peak = 0;
};
inline MemoryCount memory_count;

// The highest number of bytes that stood allocated at once while run() ran, beyond what stood before.
template <class F>
std::size_t PeakBytes(F run) {
  memory_count = {true, 0, 0};
  run();
  memory_count.on = false;
  return std::size_t(memory_count.peak);
}

}  // namespace kvbench

void* operator new(std::size_t size) {
  void* block = std::malloc(size ? size : 1);
  if (!block) throw std::bad_alloc();
  auto& count = kvbench::memory_count;
  if (count.on) {
    count.live += std::ptrdiff_t(malloc_usable_size(block));
    if (count.live > count.peak) count.peak = count.live;
  }
  return block;
}
void operator delete(void* block) noexcept {
  if (kvbench::memory_count.on && block) kvbench::memory_count.live -= std::ptrdiff_t(malloc_usable_size(block));
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
