#include "tests/peak_memory.h"

#include <sys/resource.h>

long kvtest::PeakMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}
