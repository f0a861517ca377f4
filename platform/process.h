// The running process and others: environment variables, modules, identity, starting, waiting and ending.
//
// Environment: GetEnvironmentVariableW gives the length without the terminator if the value fits, the size needed with
// the terminator if not, and 0 if there is no such variable. Names are case-sensitive where the system's are.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

KVSHARE_API DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD units);
// A null value removes the variable.
KVSHARE_API BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value);

#endif
