// The running processes and the version of the system, under the platform's names.
//
// Any thread may call. Failures return FALSE, 0 or INVALID_HANDLE_VALUE and set GetLastError.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/process.h"
#include "platform/types.h"

#ifdef _WIN32

#include <psapi.h>
#include <tlhelp32.h>

#else

// ---- the process-status library

// The numbers of the running processes, as many as fit into `bytes`; `needed` receives the number of bytes written. If
// the array is full, there may be more processes.
KVSHARE_API BOOL EnumProcesses(DWORD* ids, DWORD bytes, LPDWORD needed);

// The modules of a process, as many as fit into `bytes`; `needed` receives the bytes for all. On this system only the
// program itself is listed, and its handle can only be used in GetModuleBaseNameW. ERROR_ACCESS_DENIED for a process of
// another user or of the system, ERROR_INVALID_HANDLE for a process that has ended.
KVSHARE_API BOOL EnumProcessModules(HANDLE process, HMODULE* modules, DWORD bytes, LPDWORD needed);

// The name of a module's file without its folder; null means the program. Returns the length; a longer name is cut. 0
// on failure, as above.
KVSHARE_API DWORD GetModuleBaseNameW(HANDLE process, HMODULE module, LPWSTR buffer, DWORD units);

// ---- snapshots

inline constexpr DWORD TH32CS_SNAPPROCESS = 2;

struct PROCESSENTRY32W {
  DWORD dwSize;  // set by the caller
  DWORD cntUsage;
  DWORD th32ProcessID;
  DWORD_PTR th32DefaultHeapID;
  DWORD th32ModuleID;
  DWORD cntThreads;
  DWORD th32ParentProcessID;
  LONG pcPriClassBase;
  DWORD dwFlags;
  WCHAR szExeFile[MAX_PATH];  // the name that the process gave itself if the program's file cannot be read
};
using LPPROCESSENTRY32W = PROCESSENTRY32W*;

// A snapshot of all processes. flags is TH32CS_SNAPPROCESS; id is ignored. The caller closes it with CloseHandle.
KVSHARE_API HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD id);
// Return the first and the next entry; FALSE with ERROR_NO_MORE_FILES at the end, with ERROR_BAD_LENGTH if dwSize is
// not set.
KVSHARE_API BOOL Process32FirstW(HANDLE snapshot, LPPROCESSENTRY32W entry);
KVSHARE_API BOOL Process32NextW(HANDLE snapshot, LPPROCESSENTRY32W entry);

// ---- the system

inline constexpr DWORD VER_PLATFORM_WIN32s = 0;
inline constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;  // the older family of systems, without EnumProcesses
inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;       // all current systems

struct OSVERSIONINFOW {
  DWORD dwOSVersionInfoSize;  // set by the caller
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];  // more about the system
};
using LPOSVERSIONINFOW = OSVERSIONINFOW*;

// On this system the kernel's version, such as 6.1.25, and its full release text. ERROR_INSUFFICIENT_BUFFER if the size
// is not set.
KVSHARE_API BOOL GetVersionExW(LPOSVERSIONINFOW version);

#endif
