// Whether somebody is at the other end of a stream, so that a question can be asked; Ctrl-C; lines for developers.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

#else

// Not 0 if the stream number (0 input, 1 output, 2 errors) is a terminal.
KVSHARE_API int _isatty(int stream);

inline constexpr DWORD CTRL_C_EVENT = 0;
using PHANDLER_ROUTINE = BOOL (*)(DWORD event);

// Adds or removes a routine that hears of Ctrl-C, up to four. The one that was added last is asked first; the first
// that answers TRUE ends the matter, and if none does, so does the process. A routine is called in the middle of
// whatever a thread does: it may change atomics that need no lock, and nothing else. FALSE with ERROR_INVALID_PARAMETER
// if there is no room, or no such routine.
KVSHARE_API BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE routine, BOOL add);

// A line for developers, to the debugger if there is one; here to the standard errors. Null does nothing.
KVSHARE_API void OutputDebugStringW(LPCWSTR text);

#endif
