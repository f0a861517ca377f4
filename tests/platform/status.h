// The last errors of calls.
#pragma once

#include "platform/errors.h"

// 0 if a call is done, otherwise its last error. The next call finds none.
inline LONG StatusOf(bool done) {
  const DWORD status = GetLastError();
  SetLastError(0);
  return done ? 0 : LONG(status);
}
