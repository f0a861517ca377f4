// Threads: who runs, pausing, recursive locks, and how much stack is left.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD INFINITE = 0xFFFFFFFF;

// A number of the calling thread that no other thread of the system has while it lives; never 0.
KVSHARE_API DWORD GetCurrentThreadId();

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

// The bytes between the caller's frame and the end of the calling thread's stack. Who recurses as deep as a file tells
// it to compares this with what one level takes, and refuses the file in time. The limits are looked up once a thread,
// so the call costs a few instructions. On a stack that is not the thread's own (a fibre, a signal stack) the answer
// is 0.
KVSHARE_API std::size_t StackBytesLeft();
