// The heap as one thread uses it: counts its bytes, and lets one allocation fail.
#pragma once

#include <cstddef>

namespace kvtest {

// Blocks from malloc and operator new, in the program and its libraries. Under a sanitizer only those from operator
// new. Blocks of the library's pool count only if the pool takes them from the heap, as under the address sanitizer
// (framework/block_pool.h).
struct HeapOfThread {
  std::ptrdiff_t live = 0;  // bytes; use only differences
  std::ptrdiff_t peak = 0;
  long until_failure = 0;  // 1: the next allocation fails; 0: none
  bool failed = false;
};
inline thread_local constinit HeapOfThread heap;

}  // namespace kvtest
