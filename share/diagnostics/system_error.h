// ShowError: the calling thread's last system error as a message.
#pragma once

#include "platform/types.h"

// Without an error it prints "No errors to report" on stdout and returns 0; otherwise it shows the error's text
// (share/diagnostics/outcome.h) and returns 1.
KVSHARE_API int ShowError();
