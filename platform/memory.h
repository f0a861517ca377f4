// Large memory blocks directly from the system.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

using SIZE_T = std::size_t;

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD MEM_RESET = 0x80000;
inline constexpr DWORD PAGE_READWRITE = 0x04;

// With MEM_RESERVE | MEM_COMMIT and a null address: returns a new region of zeros, aligned to 64 KiB; parts that are
// never touched cost no memory. protection must be PAGE_READWRITE and bytes above 0 and within the address space,
// otherwise null with ERROR_INVALID_PARAMETER. Null with ERROR_NOT_ENOUGH_MEMORY without memory. Any thread may call.
//
// With MEM_RESET and a range of bytes in an existing region: the content of its whole pages is no longer needed, and
// the system may take their memory when it is short. Writing there later is allowed; reading before that gives
// undefined bytes. Returns the address.
KVSHARE_API void* VirtualAlloc(void* address, SIZE_T bytes, DWORD allocation, DWORD protection);

// Frees a whole region: address is the result of VirtualAlloc, bytes is 0 and how is MEM_RELEASE. FALSE with
// ERROR_INVALID_PARAMETER for other arguments. Any thread may call.
KVSHARE_API BOOL VirtualFree(void* address, SIZE_T bytes, DWORD how);

#endif
