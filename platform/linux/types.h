// The system's basic types under the platform's names. For platform/types.h alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#define KVSHARE_API __attribute__((visibility("default")))
// Marks a thread-local variable of the library that is read without a call. Such variables share a small space that the
// loader keeps for libraries: pointers and numbers only.
#define KV_FAST_THREAD_LOCAL [[gnu::tls_model("initial-exec")]] thread_local

// The headers of the ODBC driver manager define some names of this header with other meanings. If they come first, this
// header uses names of its own for these types. If they come later, the macro below keeps them from it.
#if defined(__SQLTYPES_H) && !defined(ALREADY_HAVE_WINDOWS_TYPE)
#undef BOOL
#define TCHAR KV_TCHAR
#define WCHAR KV_WCHAR
#define LPTSTR KV_LPTSTR
#define LPWSTR KV_LPWSTR
#define LPCWSTR KV_LPCWSTR
#define HINSTANCE KV_HINSTANCE
#define ULONG KV_ULONG
#endif

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using BOOL = int;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using ULONG = std::uint32_t;
// A macro of one word, because modules write "unsigned __int64" and "__int64(x)" too.
#ifndef __int64
#define __int64 long
#endif
static_assert(std::is_same_v<__int64, LONGLONG>);
using DWORD_PTR = std::uintptr_t;
using LANGID = WORD;
using LCID = DWORD;
using LSTATUS = LONG;
using ACCESS_MASK = DWORD;
using REGSAM = ACCESS_MASK;
// A colour 0x00BBGGRR; only the low 32 bits are used.
using COLORREF = unsigned long;

using TCHAR = char16_t;
using WCHAR = char16_t;
using LPTSTR = TCHAR*;
using LPWSTR = WCHAR*;
using LPCTSTR = const TCHAR*;
using LPCWSTR = const WCHAR*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPDWORD = DWORD*;

#define KV_TEXT_LITERAL(text) u##text
#define _T(text) KV_TEXT_LITERAL(text)

// Opaque handles. A null handle means "no object" unless a call says otherwise.
struct HKEY__;
struct HINSTANCE__;
using HANDLE = void*;
using HKEY = HKEY__*;
using PHKEY = HKEY*;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;

// The types that the driver manager's headers expect of a system that has the types above.
#ifndef __SQLTYPES_H
#define ALREADY_HAVE_WINDOWS_TYPE
#define FAR
#define CALLBACK
#define SQL_API
using CHAR = char;
using UCHAR = unsigned char;
using SCHAR = signed char;
using SQLSCHAR = SCHAR;
using SDWORD = int;
using UDWORD = unsigned int;
using SWORD = short;
using UWORD = unsigned short;
using SLONG = long;
using SSHORT = short;
using USHORT = unsigned short;
using SDOUBLE = double;
using LDOUBLE = double;
using SFLOAT = float;
using PTR = void*;
using RETCODE = short;
using HWND = void*;
using SQLHWND = void*;
#endif

struct POINT {
  LONG x;
  LONG y;
};
struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD MAX_PATH = 260;
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)))

// General access rights; each kind of object defines their meaning.
inline constexpr ACCESS_MASK GENERIC_WRITE = 0x40000000;
inline constexpr ACCESS_MASK GENERIC_READ = 0x80000000;

// A time in units of 100 ns since the beginning of 1601, UTC.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
// Access rights of a new object. Calls accept a null pointer and ignore any other.
struct SECURITY_ATTRIBUTES;

// Status codes, with the numbers of the platform's documentation.
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;
inline constexpr LONG ERROR_PATH_NOT_FOUND = 3;
inline constexpr LONG ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr LONG ERROR_ACCESS_DENIED = 5;
inline constexpr LONG ERROR_INVALID_HANDLE = 6;
inline constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr LONG ERROR_INVALID_DATA = 13;
inline constexpr LONG ERROR_NOT_READY = 21;
inline constexpr LONG ERROR_WRITE_FAULT = 29;
inline constexpr LONG ERROR_READ_FAULT = 30;
inline constexpr LONG ERROR_GEN_FAILURE = 31;
inline constexpr LONG ERROR_SHARING_VIOLATION = 32;
inline constexpr LONG ERROR_HANDLE_EOF = 38;
inline constexpr LONG ERROR_NOT_SUPPORTED = 50;
inline constexpr LONG ERROR_FILE_EXISTS = 80;
inline constexpr LONG ERROR_INVALID_PARAMETER = 87;
inline constexpr LONG ERROR_DISK_FULL = 112;
inline constexpr LONG ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr LONG ERROR_INVALID_NAME = 123;
inline constexpr LONG ERROR_MOD_NOT_FOUND = 126;
inline constexpr LONG ERROR_BAD_EXE_FORMAT = 193;
inline constexpr LONG ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr LONG ERROR_MORE_DATA = 234;
inline constexpr LONG ERROR_NO_MORE_ITEMS = 259;
inline constexpr LONG ERROR_DIR_NOT_EMPTY = 145;
inline constexpr LONG ERROR_ALREADY_EXISTS = 183;
inline constexpr LONG ERROR_BADDB = 1009;
inline constexpr LONG ERROR_KEY_DELETED = 1018;
inline constexpr LONG ERROR_UNKNOWN_REVISION = 1305;
inline constexpr LONG ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
