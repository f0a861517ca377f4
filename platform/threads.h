// Threads: starting, waiting, suspending, pausing, recursive locks, and the stack space left.
//
// Any thread may call. Failures return the described value and set GetLastError. Thread handles are those of
// platform/handles.h: closing a handle does not end the thread, and the thread's end does not close its handle.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/process.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD INFINITE = 0xFFFFFFFF;

// The calling thread's number; unique in the system while the thread runs; never 0.
KVSHARE_API DWORD GetCurrentThreadId();

// ---- threads

using LPTHREAD_START_ROUTINE = DWORD (*)(void* parameter);

// Starts a thread that runs the routine. attributes must be null; stackBytes 0 means the system's default; flags is 0.
// Optional: id; it is set before the call returns and before the routine runs. Returns null with
// ERROR_NOT_ENOUGH_MEMORY if the system gives no more threads. The caller closes the handle; WaitForSingleObject and
// WaitForMultipleObjects wait for the thread's end.
KVSHARE_API HANDLE CreateThread(SECURITY_ATTRIBUTES* attributes, std::size_t stackBytes, LPTHREAD_START_ROUTINE routine,
                                void* parameter, DWORD flags, LPDWORD id);

inline constexpr DWORD MAXIMUM_SUSPEND_COUNT = 127;
inline constexpr LONG ERROR_SIGNAL_REFUSED = 156;

// ---- waiting

// Waits until all objects (threads or processes) have ended, or one of them if `all` is FALSE, at most that long.
// Returns WAIT_OBJECT_0, plus the index of the first ended object if `all` is FALSE; WAIT_TIMEOUT; or WAIT_FAILED with
// ERROR_INVALID_HANDLE, or ERROR_INVALID_PARAMETER for no handles. This system accepts any number of handles, others
// only 64. The call also waits for an object whose handle is closed during the call.
KVSHARE_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds);

// Pauses the calling thread for at least that long. 0 lets another waiting thread run; INFINITE never returns.
KVSHARE_API void Sleep(DWORD milliseconds);

// A recursive lock: a thread may enter again while it holds the lock, and must leave once per entry. The storage
// belongs to the caller and must not be copied or moved. Any thread may enter between Initialize and Delete. Undefined:
// entering at another time, leaving without holding, deleting while a thread holds it.
struct CRITICAL_SECTION {
  alignas(8) BYTE storage[48];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

KVSHARE_API void InitializeCriticalSection(LPCRITICAL_SECTION section);
KVSHARE_API void DeleteCriticalSection(LPCRITICAL_SECTION section);
KVSHARE_API void EnterCriticalSection(LPCRITICAL_SECTION section);
KVSHARE_API void LeaveCriticalSection(LPCRITICAL_SECTION section);
// Returns TRUE if the calling thread now holds the section, FALSE immediately if another thread holds it.
KVSHARE_API BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);

#endif

// ---- suspending

// Raise and lower the thread's suspend count and return the count before; 0 stays 0. The thread runs while the count is
// 0: resume it once per suspension. Return 0xFFFFFFFF on failure: ERROR_ACCESS_DENIED for a thread that has ended,
// ERROR_SIGNAL_REFUSED above the maximum.
//
// A suspended thread stops at its next SuspensionPoint, not in the middle of other code, so that it holds no lock of
// the runtime while it waits. A thread that never reaches one keeps running.
KVSHARE_API DWORD SuspendAtPoint(HANDLE thread);
KVSHARE_API DWORD ResumeAtPoint(HANDLE thread);

// Waits while the calling thread is suspended. The library calls it where a job's code calls into the library.
KVSHARE_API void SuspensionPoint();

// Between these two calls SuspensionPoint does nothing on the calling thread. A thread calls them around each lock that
// it holds, so that no other thread waits for a suspended one.
KVSHARE_API void HoldOffSuspension();
KVSHARE_API void AllowSuspension();

// ---- stack

// The number of bytes left on the calling thread's stack. Code that recurses as deep as a file demands compares it with
// the need of one level and refuses the file in time. Costs a few instructions, except for the first call of a thread.
// Returns 0 on another stack than the thread's own (a fibre, a signal stack). Only a first call can raise
// std::bad_alloc.
KVSHARE_API std::size_t StackBytesLeft();
