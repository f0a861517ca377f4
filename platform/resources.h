// Resource-only libraries: loading them as data, and their string tables by number.
//
// A library is a file in the portable executable format, of 32 or 64 bits; nothing in it is ever run, so that any
// system reads the language libraries of an installation. The file is read once and may be damaged or hostile: what
// does not hold together fails to load or lacks the string. Any thread may call; a module must not be freed while
// another thread uses it or a text that points into it. Failures give the reason in GetLastError.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 0x2;
inline constexpr DWORD LOAD_LIBRARY_AS_IMAGE_RESOURCE = 0x20;
inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE_EXCLUSIVE = 0x40;

// Loads a library as data by its product path (platform/paths.h), ".dll" added to a name without an extension. Null if
// it can't be read, ERROR_BAD_EXE_FORMAT if it is no library. flags must have one of the three above; loading code is
// ERROR_NOT_SUPPORTED. file must be null. Each call makes a module of its own, to be freed by FreeLibrary.
//
// The handle of a data module has its lowest bit set, which the address of a running module never has.
KVSHARE_API HMODULE LoadLibraryExW(LPCWSTR path, HANDLE file, DWORD flags);

// Frees a data module; texts that point into it die. FALSE with ERROR_MOD_NOT_FOUND if the handle is none.
KVSHARE_API BOOL FreeLibrary(HMODULE module);

// Copies string id of the module, cut to units - 1 and terminated, and gives the length of what was copied; 0 with an
// empty buffer if there is none. With units 0, buffer receives a pointer to the text inside the module, which is not
// terminated and lives as long as the module, and the result is the text's length. Only the low 16 bits of id count. Of
// several languages the neutral one is taken, else the user's, else one with the user's primary language, else the
// first. A running module has no strings here.
KVSHARE_API int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int units);

#endif
