// The clock that background work waits and stamps itself by: the system's, unless a test has put one of its own in its
// place, which it then steps as it likes.
#pragma once

#include "platform/time.h"
#include "platform/types.h"

// No function is null. Any thread calls them.
struct Clock {
  void (*sleep)(DWORD milliseconds);      // as Sleep
  void (*systemTime)(LPSYSTEMTIME time);  // as GetSystemTime
  __time64_t (*time)();                   // seconds since 1970
};

KVSHARE_API const Clock& CurrentClock();
// Null puts the system's back. The table stays the caller's and has to outlive its use.
KVSHARE_API void SetCurrentClock(const Clock* clock);
