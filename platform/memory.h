// Memory straight from the system, in large pieces.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

using SIZE_T = std::size_t;

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD MEM_RESET = 0x80000;
inline constexpr DWORD PAGE_READWRITE = 0x04;

// A new region of zeros that begins at a multiple of 64 KiB; what of it is never touched costs no memory. address must
// be null, allocation MEM_RESERVE | MEM_COMMIT, protection PAGE_READWRITE and bytes above 0, else null comes with
// ERROR_INVALID_PARAMETER; null with ERROR_NOT_ENOUGH_MEMORY if there is no room. Any thread may call.
//
// With MEM_RESET and the address and size of a region that stands: what it holds is of no interest any more. The system
// may take the memory when it is short of it, and until then writing there costs nothing; what is read ahead of that is
// anything. Gives the address.
KVSHARE_API void* VirtualAlloc(void* address, SIZE_T bytes, DWORD allocation, DWORD protection);

// Gives a whole region back: address is what VirtualAlloc gave, bytes 0 and how MEM_RELEASE. FALSE with
// ERROR_INVALID_PARAMETER for anything else. Any thread may call.
KVSHARE_API BOOL VirtualFree(void* address, SIZE_T bytes, DWORD how);

#endif
