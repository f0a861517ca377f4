// Counts the bytes that the running thread holds from operator new, in this program and in the libraries it uses.
// Blocks of the library's pool are among them only where the pool takes them from the heap, as it does under the
// address sanitizer (framework/block_pool.h); elsewhere its pages are not counted.
#pragma once

#include <cstddef>

namespace kvtest {

// What stands allocated; only differences mean anything.
std::ptrdiff_t LiveBytes();
// The highest LiveBytes since the last call of it, or since the thread began.
std::ptrdiff_t TakePeakBytes();

}  // namespace kvtest
