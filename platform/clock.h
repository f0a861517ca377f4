// The clock for background work and logs (pauses and time stamps): the system's clock, or a test's own clock.
#pragma once

#include "platform/time.h"
#include "platform/types.h"

// No function may be null. Any thread may call them.
struct Clock {
  void (*sleep)(DWORD milliseconds);      // as Sleep
  void (*systemTime)(LPSYSTEMTIME time);  // as GetSystemTime
  __time64_t (*time)();                   // seconds since 1970
  DWORD (*ticks)() = GetTickCount;        // milliseconds
};

KVSHARE_API const Clock& CurrentClock();
// Sets the clock; null restores the system's clock. The table stays the caller's and must live while it is set.
KVSHARE_API void SetCurrentClock(const Clock* clock);
