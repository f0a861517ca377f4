// Whether somebody is at the other end of a stream, so that a question can be asked.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

#else

// Not 0 if the stream number (0 input, 1 output, 2 errors) is a terminal.
KVSHARE_API int _isatty(int stream);

#endif
