// The main function of kvshare-crash, the helper program of crashed processes (platform/crash_helper.h).
#pragma once

#include "platform/types.h"

// Serves the process that has started the program, and returns the exit code.
KVSHARE_API int RunCrashHelper(int argc, char** argv);
