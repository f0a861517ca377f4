#include "tests/host/live_bytes.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local std::ptrdiff_t t_live = 0;
thread_local std::ptrdiff_t t_peak = 0;

void Release(void* block) noexcept {
  if (block) t_live -= std::ptrdiff_t(malloc_usable_size(block));
  std::free(block);
}

}  // namespace

namespace kvtest {

std::ptrdiff_t LiveBytes() { return t_live; }

std::ptrdiff_t TakePeakBytes() { return std::exchange(t_peak, t_live); }

}  // namespace kvtest

void* operator new(std::size_t size) {
  void* const block = std::malloc(size ? size : 1);
  if (!block) throw std::bad_alloc();
  t_live += std::ptrdiff_t(malloc_usable_size(block));
  t_peak = std::max(t_peak, t_live);
  return block;
}
void operator delete(void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
