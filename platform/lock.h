// PlatformLock, a lock for variables that exist before main and are never destroyed. Not public.
#pragma once

#ifdef _WIN32

#include "platform/types.h"

// Not std::mutex, whose constructor runs at the start of the program here.
class PlatformLock {
 public:
  constexpr PlatformLock() = default;
  PlatformLock(const PlatformLock&) = delete;
  PlatformLock& operator=(const PlatformLock&) = delete;

  void lock() { AcquireSRWLockExclusive(&lock_); }
  void unlock() { ReleaseSRWLockExclusive(&lock_); }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
};

#else

#include <mutex>

using PlatformLock = std::mutex;

#endif
