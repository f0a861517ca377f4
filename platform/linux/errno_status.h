// Conversion of errno to a platform status.
#pragma once

#include "platform/types.h"

// ERROR_GEN_FAILURE for an errno without its own status.
LONG StatusFromErrno(int code);
// Both set the thread's last status and return false, for `return FailWithErrno(errno)`.
bool FailWithStatus(LONG status);
bool FailWithErrno(int code);
