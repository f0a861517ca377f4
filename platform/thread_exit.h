// Work at the end of a thread.
//
// A thread_local variable with a destructor is not for every system: on some the variables are freed before their
// destructors run.
#pragma once

#include "platform/types.h"

// Calls `call` at the end of the calling thread, the one that was added last first. Simple thread-local variables still
// exist then. A function that is added during these calls is called too, one that is added later is not.
KVSHARE_API void AtThreadExit(void (*call)());
