// Handles of files, processes and threads.
//
// A handle is valid until CloseHandle. Calls with an invalid handle, or with a handle of another kind, fail with
// ERROR_INVALID_HANDLE. An object that another thread is using in a call lives until that call ends.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// FALSE with ERROR_INVALID_HANDLE for an invalid handle.
KVSHARE_API BOOL CloseHandle(HANDLE handle);

#endif
