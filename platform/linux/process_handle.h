// What the sources on processes share. Internal to platform/linux.
#pragma once

#include "platform/types.h"

// The number of a handle's process, which another process can have as soon as this one has ended; 0, with the last
// status set, if the handle names no process.
DWORD ProcessIdOf(HANDLE process);
