// Threads: starting them, waiting for them, suspending them, pausing, recursive locks, and how much stack is left.
//
// Any thread may call. What fails gives the value told and the reason in GetLastError. A thread's handle is one of
// platform/handles.h: closing it does not touch the thread, and the thread's end does not close it.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/process.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD INFINITE = 0xFFFFFFFF;

// A number of the calling thread that no other thread of the system has while it lives; never 0.
KVSHARE_API DWORD GetCurrentThreadId();

// ---- threads

using LPTHREAD_START_ROUTINE = DWORD (*)(void* parameter);
inline constexpr DWORD CREATE_SUSPENDED = 0x4;

// Starts a thread that runs the routine and ends with it. attributes must be null; stackBytes of 0 is the system's
// default; flags is 0 or CREATE_SUSPENDED. The thread's number goes to id, if that is not null, before the call returns
// and before the routine runs. Null with ERROR_NOT_ENOUGH_MEMORY if the system gives no more threads. The handle is
// closed by the caller; WaitForSingleObject and WaitForMultipleObjects take it and see the thread's end.
KVSHARE_API HANDLE CreateThread(SECURITY_ATTRIBUTES* attributes, std::size_t stackBytes, LPTHREAD_START_ROUTINE routine,
                                void* parameter, DWORD flags, LPDWORD id);

// Stands for whichever thread uses it; nothing is to be closed, and closing it does nothing. Handed to another thread
// it names that one.
KVSHARE_API HANDLE GetCurrentThread();

inline constexpr DWORD MAXIMUM_SUSPEND_COUNT = 127;
inline constexpr LONG ERROR_SIGNAL_REFUSED = 156;

// Raise and lower how often the thread is suspended, and give the count before; a count of 0 stays 0. 0xFFFFFFFF on
// failure: ERROR_ACCESS_DENIED for a thread that has ended, ERROR_SIGNAL_REFUSED above the maximum.
//
// A thread of this system stops where it calls SuspensionPoint (below), not in the middle of whatever it does: so it
// holds none of the runtime's locks while it stands. One that never gets there runs on.
KVSHARE_API DWORD SuspendThread(HANDLE thread);
KVSHARE_API DWORD ResumeThread(HANDLE thread);

// ---- waiting

// Waits until all of the objects (threads or processes) have ended or, with all FALSE, one of them, at most that long.
// WAIT_OBJECT_0, plus the place of the first that has ended with all FALSE; WAIT_TIMEOUT; WAIT_FAILED with
// ERROR_INVALID_HANDLE, or ERROR_INVALID_PARAMETER for no handle at all. Of handles there may be any number here; other
// systems stop at MAXIMUM_WAIT_OBJECTS. A handle that is closed meanwhile is still waited for.
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;
KVSHARE_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds);

// Pauses the calling thread for at least that long. 0 lets another thread run that waits for the processor; INFINITE
// never returns.
KVSHARE_API void Sleep(DWORD milliseconds);

// A recursive lock: the thread that holds it may enter again and leaves as often as it entered. The storage belongs to
// the caller and must not be copied or moved. Between Initialize and Delete any thread may enter; entering before or
// after, leaving without holding, and deleting while somebody holds it are errors of the caller with no defined result.
struct CRITICAL_SECTION {
  alignas(8) BYTE storage[48];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

KVSHARE_API void InitializeCriticalSection(LPCRITICAL_SECTION section);
KVSHARE_API void DeleteCriticalSection(LPCRITICAL_SECTION section);
KVSHARE_API void EnterCriticalSection(LPCRITICAL_SECTION section);
KVSHARE_API void LeaveCriticalSection(LPCRITICAL_SECTION section);
// TRUE if the calling thread now holds the section, FALSE at once if another thread does.
KVSHARE_API BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);

#endif

// Holds the calling thread as long as it is suspended. The library calls this where code of a job enters it, and does
// nothing in a thread that is inside a critical section, so that nobody waits for a lock of a thread that stands. On a
// system that stops threads by itself it does nothing either.
KVSHARE_API void SuspensionPoint();

// The bytes between the caller's frame and the end of the calling thread's stack. Who recurses as deep as a file tells
// it to compares this with what one level takes, and refuses the file in time. The limits are looked up once a thread,
// so the call costs a few instructions. On a stack that is not the thread's own (a fibre, a signal stack) the answer
// is 0.
KVSHARE_API std::size_t StackBytesLeft();
