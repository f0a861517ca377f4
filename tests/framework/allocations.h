// Counts what the running thread allocates with operator new, in this program and in the libraries it uses.
#pragma once

#include <cstddef>

namespace kvtest {

std::size_t AllocationsOfThisThread();

}  // namespace kvtest
