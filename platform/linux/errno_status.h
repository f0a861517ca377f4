// errno turned into a status of the platform.
#pragma once

#include "platform/types.h"

// ERROR_GEN_FAILURE for an errno that has no status of its own.
LONG StatusFromErrno(int code);
// Both set the thread's last status and give false, for `return FailWithErrno(errno)`.
bool FailWithStatus(LONG status);
bool FailWithErrno(int code);
