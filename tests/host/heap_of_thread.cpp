#include "tests/host/heap_of_thread.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

using kvtest::heap;

namespace {

bool Fails() {
  if (heap.until_failure == 0 || --heap.until_failure > 0) return false;
  heap.failed = true;
  errno = ENOMEM;
  return true;
}

void* Counted(void* block) {
  if (!block) return nullptr;
  heap.live += std::ptrdiff_t(malloc_usable_size(block));
  heap.peak = std::max(heap.peak, heap.live);
  return block;
}

void Uncount(void* block) {
  if (block) heap.live -= std::ptrdiff_t(malloc_usable_size(block));
}

}  // namespace

#if defined(KV_BLOCKS_FROM_HEAP) || defined(__SANITIZE_THREAD__)

void* operator new(std::size_t size) {
  void* const block = Fails() ? nullptr : std::malloc(size ? size : 1);
  if (!block) throw std::bad_alloc();
  return Counted(block);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Fails() ? nullptr : Counted(std::malloc(size ? size : 1));
}
void operator delete(void* block) noexcept {
  Uncount(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { ::operator delete(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { ::operator delete(block); }

#else  // the system's operator new calls malloc

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) noexcept { return Fails() ? nullptr : Counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) noexcept {
  return Fails() ? nullptr : Counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) noexcept {
  if (Fails()) return nullptr;
  Uncount(block);
  void* const moved = __libc_realloc(block, size);
  return moved ? Counted(moved) : (Counted(block), nullptr);
}
void free(void* block) noexcept {
  Uncount(block);
  __libc_free(block);
}

}  // extern "C"

#endif
