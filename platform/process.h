// This process and others: environment variables, modules, identity, waiting and ending.
//
// Any thread may call. Failures return FALSE, 0 or null and set GetLastError. Paths are product paths
// (platform/paths.h); the caller closes handles with CloseHandle (platform/handles.h).
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/types.h"

#ifndef _WIN32

// ---- environment

// Returns the length without the terminator if the value fits, otherwise the size needed with the terminator; 0 if
// there is no such variable. Names are case-sensitive where the system's names are.
KVSHARE_API DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD units);
// A null value removes the variable.
KVSHARE_API BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value);

// ---- modules

// Finds a loaded library by its name, without case, with or without folder and extension: KVSHAREu and KVSHAREu.dll
// find libKVSHAREu.so. Null means the program itself. The handle is the module's address and is not closed. Returns
// null with ERROR_MOD_NOT_FOUND if no such library is loaded.
KVSHARE_API HMODULE GetModuleHandleW(LPCWSTR name);

// The product path of a module's file, also of a resource-only library; null means the program. Returns the length. If
// the buffer is too small, the text is cut and terminated, and the result is `units` with ERROR_INSUFFICIENT_BUFFER.
KVSHARE_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD units);

// ---- identity

// The user's log-on name. `units` is the buffer's size and receives the length with the terminator; if the buffer is
// too small, the size needed, with FALSE and ERROR_INSUFFICIENT_BUFFER.
KVSHARE_API BOOL GetUserNameW(LPWSTR buffer, LPDWORD units);

KVSHARE_API DWORD GetCurrentProcessId();

// ---- other processes

struct STARTUPINFOW {
  DWORD cb;
  LPWSTR lpDesktop;
  LPWSTR lpTitle;
  DWORD dwFlags;
  WORD wShowWindow;
};
using LPSTARTUPINFOW = STARTUPINFOW*;

struct PROCESS_INFORMATION {
  HANDLE hProcess;
  HANDLE hThread;
  DWORD dwProcessId;
  DWORD dwThreadId;
};
using LPPROCESS_INFORMATION = PROCESS_INFORMATION*;

// Starts a program and fills information with two handles, both to be closed. The command line is split at blanks;
// quotes and backslashes work as the platform's own start-up code takes them. Without an application the first word is
// the program, looked for in PATH if it has no folder; with one, the first word is only what the program sees as its
// name. A folder, which may be null, is the new current one. environment must be null: the child inherits this one's.
// No file is inherited but the standard three. startup counts only by being there, and may be null.
KVSHARE_API BOOL CreateProcessW(LPCWSTR application, LPWSTR commandLine, void* processAttributes,
                                void* threadAttributes, BOOL inherit, DWORD flags, void* environment, LPCWSTR folder,
                                LPSTARTUPINFOW startup, LPPROCESS_INFORMATION information);

inline constexpr DWORD PROCESS_TERMINATE = 0x1;
inline constexpr DWORD PROCESS_VM_READ = 0x10;
inline constexpr DWORD PROCESS_QUERY_INFORMATION = 0x400;
inline constexpr DWORD SYNCHRONIZE = 0x100000;

// Returns a handle of a running process; null with ERROR_INVALID_PARAMETER if there is no process of this number.
KVSHARE_API HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD id);

// The number of a handle's process; 0 on failure. It is the process's own only while that runs.
KVSHARE_API DWORD GetProcessId(HANDLE process);

// Ends a process without asking it. ERROR_ACCESS_DENIED if it has ended already or may not be ended. The process may
// still run for a moment after the call.
KVSHARE_API BOOL TerminateProcess(HANDLE process, UINT exitCode);

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

// Waits until the process or thread ends, at most that long. Returns WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED. 0
// milliseconds only checks; INFINITE (platform/threads.h) waits without limit.
KVSHARE_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

inline constexpr DWORD STILL_ACTIVE = 259;

// The exit code, or STILL_ACTIVE. A process that was ended by TerminateProcess of this one has the code given there,
// one ended by a signal 128 and the signal's number. Of a process that this one did not start the code is only known
// while it runs; afterwards the call fails with ERROR_ACCESS_DENIED.
KVSHARE_API BOOL GetExitCodeProcess(HANDLE process, LPDWORD exitCode);

#endif
