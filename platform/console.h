// The program's arguments and standard streams; whether a stream is a terminal, so that the program can ask a question;
// Ctrl-C; and messages for developers.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

#else

// Not 0 if the stream (0 input, 1 output, 2 errors) is a terminal.
KVSHARE_API int _isatty(int stream);

inline constexpr DWORD CTRL_C_EVENT = 0;
using PHANDLER_ROUTINE = BOOL (*)(DWORD event);

// Adds or removes a routine that is called on Ctrl-C; four at most. The routine that was added last is called first;
// the first routine that returns TRUE ends the handling. If none returns TRUE, the process ends. A routine may
// interrupt a thread at any point: it may only change lock-free atomics. Returns FALSE with ERROR_INVALID_PARAMETER if
// there is no room, or no such routine to remove.
KVSHARE_API BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE routine, BOOL add);

// Sends a line to the debugger, on this system to stderr. Null does nothing.
KVSHARE_API void OutputDebugStringW(LPCWSTR text);

#endif

// The arguments of main in UTF-8. This system's bytes are UTF-8 already; others keep the command line as wide text.
KVSHARE_API std::vector<std::string> Utf8Arguments(int argc, char** argv);

// Call at the start of a program: its standard streams pass bytes unchanged, and a terminal shows them as UTF-8 and
// understands sequences for colours. Does nothing on this system, where it is always so.
KVSHARE_API void UseUtf8Streams();
