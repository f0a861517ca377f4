// Conversion and case of UTF-16 text.
//
// MultiByteToWideChar and WideCharToMultiByte support the code pages CP_UTF8 and 1252. A target size of 0 returns the
// size needed; a source length of -1 means up to and including the terminator; the result 0 means failure. The case
// calls use Unicode's simple mappings, the same in every locale. Any thread may call.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

inline constexpr UINT CP_UTF8 = 65001;

KVSHARE_API int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceBytes, LPWSTR target,
                                    int targetUnits);
KVSHARE_API int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceUnits, LPSTR target,
                                    int targetBytes, LPCSTR defaultCharacter, BOOL* usedDefault);

// Change the text in place and return its number of units, which never changes.
KVSHARE_API DWORD CharUpperBuffW(LPWSTR text, DWORD units);
KVSHARE_API DWORD CharLowerBuffW(LPWSTR text, DWORD units);

// Compare without case: negative, 0 or positive.
KVSHARE_API int _wcsicmp(LPCWSTR a, LPCWSTR b);

#endif
