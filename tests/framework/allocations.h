// Counts what the running thread allocates with operator new and from the pool of blocks, in this program and in the
// libraries it uses. A large block of the pool counts twice.
#pragma once

#include <cstddef>

namespace kvtest {

std::size_t AllocationsOfThisThread();

}  // namespace kvtest
