// The memory that this process has used. Each system has its source in tests/linux/ or tests/windows/.
#pragma once

namespace kvtest {

// The most kilobytes that the process has had in memory.
long PeakMemory();

}  // namespace kvtest
