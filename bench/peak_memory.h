// Measures the peak of allocated memory. Include it in exactly one source of a benchmark: it replaces malloc, calloc,
// realloc, free, mmap and munmap for the whole process, libraries included. It counts only inside PeakBytes, where the
// cost is the same for each contender. Works only with the GNU C library. Single-threaded.
#pragma once

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <vector>

#include "framework/block_pool.h"

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
  std::ptrdiff_t mapped = 0;  // bytes mapped by mmap; always counted

  void* Enter(void* block) {
    if (on && block) {
      live += std::ptrdiff_t(malloc_usable_size(block));
      Note();
    }
    return block;
  }
  void Leave(void* block) {
    if (on && block) live -= std::ptrdiff_t(malloc_usable_size(block));
  }
  // An allocator may map more than it needs and unmap the rest immediately. So a mapping raises the peak only at the
  // next unmapping or allocation.
  void Map(std::ptrdiff_t bytes) {
    mapped += bytes;
    if (on) live += bytes;
    if (bytes < 0) Note();
  }
  void Note() {
    if (live > peak) peak = live;
  }
};
inline constinit MemoryCount memory_count;

// Allocates all free pages of the block pool, so that a measured run maps every page that it uses and is counted.
class DrainedPool {
 public:
  DrainedPool() {
    const std::ptrdiff_t before = memory_count.mapped;
    do {
      Take();
    } while (memory_count.mapped == before);
    for (auto left = std::size_t(memory_count.mapped - before) / BlockPool::kPageBytes; left > 1; --left) Take();
  }
  ~DrainedPool() {
    for (void* page : pages_) BlockPool::Free(page, BlockPool::kPageBlock);
  }
  DrainedPool(const DrainedPool&) = delete;
  DrainedPool& operator=(const DrainedPool&) = delete;

 private:
  void Take() { pages_.push_back(BlockPool::Allocate(BlockPool::kPageBlock)); }

  std::vector<void*> pages_;
};

// The peak of allocated bytes while run() runs, without the bytes that were allocated before.
template <class F>
std::size_t PeakBytes(F run) {
  const DrainedPool drained;
  memory_count.live = memory_count.peak = 0;
  memory_count.on = true;
  run();
  memory_count.Note();
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
[[gnu::visibility("default")]] void* mmap(void* address, std::size_t size, int protection, int flags, int file,
                                          off_t offset) noexcept {
  auto* const map = reinterpret_cast<void*>(syscall(SYS_mmap, address, size, protection, flags, file, offset));
  if (map != MAP_FAILED) kvbench::memory_count.Map(std::ptrdiff_t(size));
  return map;
}
[[gnu::visibility("default")]] int munmap(void* address, std::size_t size) noexcept {
  kvbench::memory_count.Map(-std::ptrdiff_t(size));
  return int(syscall(SYS_munmap, address, size));
}
}
