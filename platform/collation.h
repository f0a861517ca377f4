// Sort keys: texts in the order of the user's language.
#pragma once

#include "platform/locale.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr LPCWSTR LOCALE_NAME_USER_DEFAULT = nullptr;
inline constexpr DWORD LCMAP_SORTKEY = 0x400;

// Writes the sort key of a text: the order of two texts is that of the bytes of their keys, as memcmp and then the
// length compare them. `buffer` receives the bytes, `units` is its size in bytes. Returns the number of bytes; with
// units 0, the size needed; 0 on failure: ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER for another locale than
// LOCALE_NAME_USER_DEFAULT or a length below 1, ERROR_INVALID_FLAGS for other flags. The language is that of LC_ALL,
// LC_COLLATE or LANG when the thread first calls. The last three arguments are null or 0. Any thread may call.
KVSHARE_API int LCMapStringEx(LPCWSTR locale, DWORD flags, LPCWSTR text, int textUnits, LPWSTR buffer, int units,
                              void* version, void* reserved, std::intptr_t handle);

#endif
