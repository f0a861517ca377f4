// The status of the last platform call of the calling thread, and a line of English for a status.
//
// A call sets it when it fails; a call that succeeds leaves it alone unless its description says otherwise. The numbers
// up to what types.h lists are those of all calls; the ones here come from files and processes only.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

inline constexpr LONG ERROR_NOT_SAME_DEVICE = 17;
inline constexpr LONG ERROR_NO_MORE_FILES = 18;
inline constexpr LONG ERROR_BAD_LENGTH = 24;
inline constexpr LONG ERROR_BROKEN_PIPE = 109;
inline constexpr LONG ERROR_BUFFER_OVERFLOW = 111;
inline constexpr LONG ERROR_NEGATIVE_SEEK = 131;
inline constexpr LONG ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr LONG ERROR_FILE_TOO_LARGE = 223;
inline constexpr LONG ERROR_DIRECTORY = 267;
inline constexpr LONG ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr LONG ERROR_CANT_RESOLVE_FILENAME = 1921;

KVSHARE_API DWORD GetLastError();
KVSHARE_API void SetLastError(DWORD status);

#endif

// A few words of English for a status, such as "the disk is full", for a line to the user; "error 4711" for one that
// has no words of its own. The text lives for ever; that of an unknown status until the thread's next call.
KVSHARE_API const char* ErrorText(DWORD status);
