// Whether somebody is at the other end of a stream, so that a question can be asked, and lines for developers.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

#else

// Not 0 if the stream number (0 input, 1 output, 2 errors) is a terminal.
KVSHARE_API int _isatty(int stream);

// A line for developers, to the debugger if there is one; here to the standard errors. Null does nothing.
KVSHARE_API void OutputDebugStringW(LPCWSTR text);

#endif
