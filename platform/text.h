// Conversion, case and comparison of UTF-16 text.
//
// MultiByteToWideChar and WideCharToMultiByte support the code pages CP_UTF8 and 1252. A target size of 0 returns the
// size needed; a source length of -1 means up to and including the terminator; the result 0 means failure.
//
// Case is the platform's own table, the same in every locale and for ever: each unit by itself, pairs of one lower-case
// and one upper-case letter. Letters without such a partner (dotless i, long s, sharp s, final sigma) and surrogate
// pairs stay as they are. Registry, profile files, compound files and paths compare their names in this way. Any thread
// may call.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <wchar.h>

#else

inline constexpr UINT CP_UTF8 = 65001;

KVSHARE_API int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceBytes, LPWSTR target,
                                    int targetUnits);
KVSHARE_API int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceUnits, LPSTR target,
                                    int targetBytes, LPCSTR defaultCharacter, BOOL* usedDefault);

// Change the text in place and return its number of units, which never changes.
KVSHARE_API DWORD CharUpperBuffW(LPWSTR text, DWORD units);
KVSHARE_API DWORD CharLowerBuffW(LPWSTR text, DWORD units);

// The results of CompareStringOrdinal.
inline constexpr int CSTR_LESS_THAN = 1;
inline constexpr int CSTR_EQUAL = 2;
inline constexpr int CSTR_GREATER_THAN = 3;

// Compares two texts unit by unit, without a language's rules; a text that continues where the other one ends is the
// greater one. ignoreCase is FALSE, or TRUE to compare the upper-case forms. A negative length means up to the
// terminator. Returns 0 with ERROR_INVALID_PARAMETER for a null text or another ignoreCase.
KVSHARE_API int CompareStringOrdinal(LPCWSTR a, int aUnits, LPCWSTR b, int bUnits, BOOL ignoreCase);

#endif
