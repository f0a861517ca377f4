// Counts what a benchmark holds allocated: include in exactly one source of a benchmark, which thereby replaces malloc
// and its kin for the whole process, libraries included. Counting is off except inside PeakBytes, where it costs each
// contender the same. Works with the GNU C library only. Single-threaded.
#pragma once

#include <cstddef>

extern "C" {
std::size_t malloc_usable_size(void*);
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
}

namespace kvbench {

struct MemoryCount {
  bool on = false;
  std::ptrdiff_t live = 0;
  std::ptrdiff_t peak = 0;

  void* Enter(void* block) {
    if (on && block) {
      live += std::ptrdiff_t(malloc_usable_size(block));
      if (live > peak) peak = live;
    }
    return block;
  }
  void Leave(void* block) {
    if (on && block) live -= std::ptrdiff_t(malloc_usable_size(block));
  }
};
inline constinit MemoryCount memory_count;

// The highest number of bytes that stood allocated at once while run() ran, beyond what stood before.
template <class F>
std::size_t PeakBytes(F run) {
  memory_count = {true, 0, 0};
  run();
  memory_count.on = false;
  return std::size_t(memory_count.peak);
}

}  // namespace kvbench

extern "C" {
void* malloc(std::size_t size) { return kvbench::memory_count.Enter(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) { return kvbench::memory_count.Enter(__libc_calloc(count, size)); }
void* realloc(void* block, std::size_t size) {
  kvbench::memory_count.Leave(block);
  return kvbench::memory_count.Enter(__libc_realloc(block, size));
}
void free(void* block) {
  kvbench::memory_count.Leave(block);
  __libc_free(block);
}
}
