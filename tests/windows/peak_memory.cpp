#include "tests/peak_memory.h"

#include "platform/running_processes.h"

long kvtest::PeakMemory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return long(counters.PeakWorkingSetSize / 1024);
}
