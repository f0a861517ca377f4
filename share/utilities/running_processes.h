// Searches for a running program.
//
// Nothing throws, and any thread may call. A program's name is its file name without the folder: "KVTechDBApp.exe".
#pragma once

#include "platform/types.h"

// The results of IsProcessAlreadyRunning besides 0 and 1.
enum QFProcessSearchFailure : int {
  QF_PROCESS_NO_FUNCTIONS = 605,      // the platform lacks a necessary call
  QF_PROCESS_NO_VERSION = 606,        // the system's version could not be read
  QF_PROCESS_UNKNOWN_PLATFORM = 607,  // unknown family of systems
  QF_PROCESS_BAD_NAME = 632,          // the name is null or empty, or has more than 260 bytes
};

// 1 if a program with that name (UTF-8, compared without case) runs, 0 if not, or one of the codes above. Checks at
// most 1000 processes. A process that this process may not read has the name "Unknown", so this name can be found, too;
// kept for existing modules.
KVSHARE_API int IsProcessAlreadyRunning(const char* name);

// 1 if a program with that name (compared without case) runs. Checks all processes, also those for which the system
// knows only the name that the process gave itself. 0 if not, for null, and if the processes cannot be listed, which it
// reports to the debugger.
KVSHARE_API int IsProcessAlreadyRunning2(LPCWSTR name);
