// The helper: a small program beside the library, kvshare-crash, that writes what is to be kept of a crashed process,
// so that the broken process itself need not allocate or lock. It ends with the process.
//
// Where the system allows a crashed process to write, there is no helper: StartCrashHelper and AskCrashHelper return
// false, and the process writes itself.
#pragma once

#include <cstddef>

#include "platform/types.h"

inline constexpr std::size_t kMostRequestBytes = 64 * 1024;

// Whether this system has a helper.
#ifdef _WIN32
inline constexpr bool kHasCrashHelper = false;
#else
inline constexpr bool kHasCrashHelper = true;
#endif

// Starts the helper of this process unless it runs. Returns at once, before the helper is ready. Returns false if it
// can't be started, for example because the file is missing. Any thread may call.
KVSHARE_API bool StartCrashHelper();

// Sends a request of at most kMostRequestBytes and waits until the helper has served it. Returns true if the helper has
// written the files; false if it can't, if StartCrashHelper was never called, or if it needs longer than the limit. A
// helper that has died since is started again. For translators.
KVSHARE_API bool AskCrashHelper(const void* request, std::size_t bytes, DWORD limit_ms);

// The helper's main function: serves requests until the process has ended. `serve` gets the number of the asking
// process; it calls `written` when the files are written, and the asking process then waits without limit. Returns the
// exit code.
KVSHARE_API int ServeCrashRequests(int argc, char** argv,
                                   void (*serve)(DWORD process, const void* request, std::size_t bytes,
                                                 void (*written)()));
