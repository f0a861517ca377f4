// Resource-only libraries: loading them as data, and their strings and dialog templates by number.
//
// A library is a file in the portable executable format, 32 or 64 bits. Nothing in it is executed, so every system can
// read the language libraries of an installation. The file is read once and may be damaged or hostile: invalid parts
// make loading fail, or strings missing. Any thread may call; a module must not be freed while another thread uses it
// or a text inside it. GetLastError has the reason of a failure.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 0x2;

// Loads a library as data from a product path (platform/paths.h); a name without extension gets ".dll". Returns null if
// the file cannot be read; ERROR_BAD_EXE_FORMAT if it is not a library. flags must have LOAD_LIBRARY_AS_DATAFILE;
// without it the call fails with ERROR_NOT_SUPPORTED, because it loads no code. file must be null. Each call creates a
// new module; free it with FreeLibrary.
//
// A data module's handle has its lowest bit set; the address of a running module never has.
KVSHARE_API HMODULE LoadLibraryExW(LPCWSTR path, HANDLE file, DWORD flags);

// Frees a data module; texts inside it become invalid. FALSE with ERROR_MOD_NOT_FOUND for an invalid handle.
KVSHARE_API BOOL FreeLibrary(HMODULE module);

// Copies string `id` of the module, cut to units - 1 and terminated, and returns the number of copied units; 0 and an
// empty buffer if there is no such string. With units 0, buffer receives a pointer to the text inside the module, which
// has no terminator and is valid as long as the module, and the result is the text's length. Only the low 16 bits of id
// are used. If the string exists in several languages, the order is: neutral, the user's language, the user's primary
// language, the first one. A running module has no strings on this system.
KVSHARE_API int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int units);

// A resource's number in place of its name.
inline LPCWSTR MAKEINTRESOURCEW(WORD number) { return reinterpret_cast<LPCWSTR>(std::uintptr_t(number)); }
#define RT_DIALOG MAKEINTRESOURCEW(5)

struct HRSRC__;
using HRSRC = HRSRC__*;
// Not null if the module has the resource; kind is RT_DIALOG. ERROR_RESOURCE_NAME_NOT_FOUND if it has not. The order of
// languages is that of LoadStringW.
KVSHARE_API HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR kind);

#endif
