// Resource-only libraries: string tables by number.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// Copies string id of the module, cut to units - 1 and terminated, and gives its length; 0 if there is none. With units
// 0, buffer receives a pointer to the text inside the module, which is not terminated and lives as long as the module.
KVSHARE_API int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int units);

#endif
