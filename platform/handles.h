// Handles of files, processes and threads.
//
// A handle names an object of the platform until CloseHandle; a number that names nothing, or an object of another
// kind, fails a call with ERROR_INVALID_HANDLE. A call that another thread is in keeps the object alive while it runs.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// FALSE with ERROR_INVALID_HANDLE if the handle names nothing.
KVSHARE_API BOOL CloseHandle(HANDLE handle);

#endif
