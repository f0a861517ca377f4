// Counts the bytes that the thread has from operator new, in the program and its libraries. Blocks of the library's
// pool count only if the pool takes them from the heap, as under the address sanitizer (framework/block_pool.h).
#pragma once

#include <cstddef>

namespace kvtest {

// The allocated bytes; use only differences.
std::ptrdiff_t LiveBytes();
// The highest LiveBytes since the last call, or since the start of the thread.
std::ptrdiff_t TakePeakBytes();

}  // namespace kvtest
