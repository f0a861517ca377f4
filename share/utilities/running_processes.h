// Whether a program runs already.
//
// Nothing throws and any thread may call. A program's name is that of its file, "KVTechDBApp.exe", without its folder.
#pragma once

#include "platform/types.h"

// What IsProcessAlreadyRunning answers besides 0 and 1.
enum QFProcessSearchFailure : int {
  QF_PROCESS_NO_FUNCTIONS = 605,      // the platform lacks a call that is needed
  QF_PROCESS_NO_VERSION = 606,        // the version of the system could not be read
  QF_PROCESS_UNKNOWN_PLATFORM = 607,  // it is of a family that is not known
  QF_PROCESS_BAD_NAME = 632,          // the name is null, empty, or has 261 bytes or more
};

// 1 if a program of that name (UTF-8) runs, in any case, 0 if not, or one of the codes above. Looks at 1000 processes
// at most. A process that may not be looked into counts as "Unknown", so that this name finds any such: that is
// required.
KVSHARE_API int IsProcessAlreadyRunning(const char* name);

// 1 if a program of that name runs, in any case; looks at all processes, also where only the name is known that a
// process gave itself. 0 if not, for null, and, with a line to the debugger, if the processes can't be listed.
KVSHARE_API int IsProcessAlreadyRunning2(LPCWSTR name);
