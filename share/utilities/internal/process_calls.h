// The platform's calls for the search of a process, in a table that a test can replace. Not public.
#pragma once

#include "platform/running_processes.h"

struct ProcessCalls {
  // Null: the platform lacks the call.
  decltype(&GetVersionExW) version;
  decltype(&EnumProcesses) list;
  decltype(&EnumProcessModules) modules;
  decltype(&GetModuleBaseNameW) name;
  decltype(&CreateToolhelp32Snapshot) snapshot;
  decltype(&Process32FirstW) first;
  decltype(&Process32NextW) next;
};

// The table with the platform's calls.
KVSHARE_API const ProcessCalls& PlatformProcessCalls();

// IsProcessAlreadyRunning and IsProcessAlreadyRunning2 with a table of calls.
KVSHARE_API int FindProcess(const char* name, const ProcessCalls& calls);
KVSHARE_API int FindProcessInSnapshot(LPCWSTR name, const ProcessCalls& calls);
