// The status of the calling thread's last failed platform call, and a short English text for a status.
//
// A failing call sets the status; a successful call leaves it unchanged unless its description says otherwise. types.h
// lists the general status codes; the codes here come only from files and processes.
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
inline constexpr LONG ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr LONG ERROR_IO_DEVICE = 1117;
inline constexpr LONG ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr LONG ERROR_CANT_RESOLVE_FILENAME = 1921;

KVSHARE_API DWORD GetLastError();
KVSHARE_API void SetLastError(DWORD status);

#endif

// A short English text for a status, such as "the disk is full", for a message to the user; "error 4711" for a status
// without text. The result is valid for ever, for a status without text until the thread's next call.
KVSHARE_API const char* ErrorText(DWORD status);
