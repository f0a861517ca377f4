// Which processes run, and the version of the system, under the platform's names.
//
// Any thread may call. What fails gives FALSE, 0 or INVALID_HANDLE_VALUE and the reason in GetLastError.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/process.h"
#include "platform/types.h"

#ifndef _WIN32

// ---- the process-status library

// The numbers of the processes that run, as many as fit into bytes; needed receives the bytes written. Only a full
// array hints that there may be more.
KVSHARE_API BOOL EnumProcesses(DWORD* ids, DWORD bytes, LPDWORD needed);

// The modules of a process, as far as bytes go; needed receives the bytes of all. Only the first, the program itself,
// is told here; its handle serves GetModuleBaseNameW alone. ERROR_ACCESS_DENIED for a process of another user or of the
// system, ERROR_INVALID_HANDLE for one that has ended.
KVSHARE_API BOOL EnumProcessModules(HANDLE process, HMODULE* modules, DWORD bytes, LPDWORD needed);

// The name of a module's file, without its folder; null is the program. Gives the length; a name that doesn't fit is
// cut. 0 on failure, as above.
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
  WCHAR szExeFile[MAX_PATH];  // where the program's file may not be asked for, the name that the process gave itself
};
using LPPROCESSENTRY32W = PROCESSENTRY32W*;

// All processes as they are now; flags is TH32CS_SNAPPROCESS, the number is not used. To be closed by CloseHandle.
KVSHARE_API HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD id);
// The first and the next entry; ERROR_NO_MORE_FILES at the end, ERROR_BAD_LENGTH if dwSize is not set.
KVSHARE_API BOOL Process32FirstW(HANDLE snapshot, LPPROCESSENTRY32W entry);
KVSHARE_API BOOL Process32NextW(HANDLE snapshot, LPPROCESSENTRY32W entry);

// ---- the system

inline constexpr DWORD VER_PLATFORM_WIN32s = 0;
inline constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;  // the older family, without a process-status library
inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;       // the newer family, which every system of today is

struct OSVERSIONINFOW {
  DWORD dwOSVersionInfoSize;  // set by the caller
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];  // what else the system says of itself
};
using LPOSVERSIONINFOW = OSVERSIONINFOW*;

// Here the numbers of the kernel, 6.1.25, and its whole release behind them. ERROR_INSUFFICIENT_BUFFER if the size is
// not set.
KVSHARE_API BOOL GetVersionExW(LPOSVERSIONINFOW version);

#endif
