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
// there is no such variable. Names are case-sensitive where the system's names are. Bytes that are not UTF-8 are
// as in paths.h, in both directions.
KVSHARE_API DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD units);
// A null value removes the variable.
KVSHARE_API BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value);

// ---- modules

// Finds a loaded library by its name, without case, with or without folder and extension: KVSHAREu and KVSHAREu.dll
// find libKVSHAREu.so. Null means the program itself. The handle is the module's address and is not closed. Returns
// null with ERROR_MOD_NOT_FOUND if no such library is loaded.
KVSHARE_API HMODULE GetModuleHandleW(LPCWSTR name);

// The product path of a module's file; null means the program. A library that was loaded by a name with a version
// (libKVSHAREu.so.0.1) has its name without it. Returns the length; 0 with ERROR_MOD_NOT_FOUND for an unknown module,
// and for a library that is loaded as data (platform/resources.h). If the buffer is too small, the text is cut and
// terminated, and the result is `units` with ERROR_INSUFFICIENT_BUFFER.
KVSHARE_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD units);

// ---- identity

// The user's log-on name. `units` is the buffer's size and receives the length with the terminator; if the buffer is
// too small, the size needed, with FALSE and ERROR_INSUFFICIENT_BUFFER.
KVSHARE_API BOOL GetUserNameW(LPWSTR buffer, LPDWORD units);

KVSHARE_API DWORD GetCurrentProcessId();

// ---- other processes

inline constexpr DWORD PROCESS_TERMINATE = 0x1;
inline constexpr DWORD PROCESS_VM_READ = 0x10;
inline constexpr DWORD PROCESS_QUERY_INFORMATION = 0x400;

// Returns a handle of a running process; null with ERROR_INVALID_PARAMETER if there is no process of this number.
KVSHARE_API HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD id);

// Ends a process without asking it. ERROR_ACCESS_DENIED if it has ended already or may not be ended. The process may
// still run for a moment after the call. exitCode has no effect here.
KVSHARE_API BOOL TerminateProcess(HANDLE process, UINT exitCode);

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

// Waits until the process or thread ends, at most that long. Returns WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED. 0
// milliseconds only checks; INFINITE (platform/threads.h) waits without limit.
KVSHARE_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

#endif
