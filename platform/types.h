// The platform's basic types, constants and the export macro. Every other header of platform/ includes it.
//
// TCHAR is UTF-16 everywhere and a distinct type; DWORD and LONG have 32 bits everywhere. On a system that has these
// names, this header only includes the system's header.
#pragma once

#ifdef _WIN32

#if !defined(UNICODE) || !defined(_UNICODE)
#error "compile with UNICODE and _UNICODE defined: TCHAR is UTF-16"
#endif

#include <tchar.h>
#include <windows.h>

// Names of the system's header that are ordinary words.
#undef far
#undef near

#ifdef KVSHARE_BUILD
#define KVSHARE_API __declspec(dllexport)
#else
#define KVSHARE_API __declspec(dllimport)
#endif
#define KV_FAST_THREAD_LOCAL thread_local

#else

#include "platform/linux/types.h"

#endif

#include <string>
#include <string_view>

// A text of TCHAR units, and a view of one.
using Text = std::basic_string<TCHAR>;
using TextView = std::basic_string_view<TCHAR>;
