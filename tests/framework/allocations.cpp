#include "tests/framework/allocations.h"

#include <cstdlib>
#include <new>

#include "framework/block_pool.h"

namespace {

thread_local std::size_t t_allocations = 0;

}  // namespace

namespace kvtest {

std::size_t AllocationsOfThisThread() { return t_allocations + BlockPool::TakenByThisThread(); }

}  // namespace kvtest

void* operator new(std::size_t size) {
  ++t_allocations;
  if (void* block = std::malloc(size ? size : 1)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
