// The platform's calls that the search for a process stands on, as a table, so that a test can put others in their
// place. Not public.
#pragma once

#include "platform/running_processes.h"

struct ProcessCalls {
  // A null one counts as lacking.
  decltype(&GetVersionExW) version;
  decltype(&EnumProcesses) list;
  decltype(&EnumProcessModules) modules;
  decltype(&GetModuleBaseNameW) name;
  decltype(&CreateToolhelp32Snapshot) snapshot;
  decltype(&Process32FirstW) first;
  decltype(&Process32NextW) next;
};

// The platform's own.
KVSHARE_API const ProcessCalls& PlatformProcessCalls();

// IsProcessAlreadyRunning and IsProcessAlreadyRunning2 on given calls.
KVSHARE_API int FindProcess(const char* name, const ProcessCalls& calls);
KVSHARE_API int FindProcessInSnapshot(LPCWSTR name, const ProcessCalls& calls);
