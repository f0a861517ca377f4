// Files and folders under the platform's names, with the product's paths (platform/paths.h); a null or empty path
// fails with ERROR_PATH_NOT_FOUND.
//
// The calls of the Windows family return FALSE, or the value described, and set GetLastError. The C library's calls,
// which begin with an underscore, return -1 or null and set errno. Any thread may call; one thread at a time may use a
// handle.
//
// A new file or folder cannot have * ? " < > | in its name (ERROR_INVALID_NAME); an existing one can be used.
//
// A file is read-only if nobody may write it. Such a file cannot be opened for writing, deleted or replaced, even by a
// user who could. Line ends are never translated.
#pragma once

#include <cstdio>

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "platform/types.h"

#ifdef _WIN32

#include <direct.h>
#include <io.h>
#include <sys/stat.h>
#include <wchar.h>

#else

// ---- attributes and access

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

// Returns the attributes, for a link those of its target; INVALID_FILE_ATTRIBUTES on failure. A folder is never
// reported as read-only.
KVSHARE_API DWORD GetFileAttributesW(LPCWSTR path);

struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;  // on systems without a creation time, the last change of the file's metadata
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;  // 0 for a folder
};
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };
// Fills a WIN32_FILE_ATTRIBUTE_DATA with attributes, times and size. There is only this level.
KVSHARE_API BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, void* facts);

// Returns 0 if the path exists (mode 0), may be written (2), read (4) or both (6); else -1. EINVAL for another mode.
KVSHARE_API int _waccess(LPCWSTR path, int mode);

inline constexpr int _S_IREAD = 0x100;
inline constexpr int _S_IWRITE = 0x80;
// With _S_IWRITE makes the file writable for its owner, otherwise read-only for all. The file stays readable.
KVSHARE_API int _wchmod(LPCWSTR path, int mode);

// ---- folders

using LPSECURITY_ATTRIBUTES = void*;

// Creates one folder level. ERROR_ALREADY_EXISTS if the name exists already. A drive's root folder is created on
// demand.
KVSHARE_API BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES unused);
// Removes an empty folder, or a link to a folder but not its target. ERROR_DIRECTORY for a file.
KVSHARE_API BOOL RemoveDirectoryW(LPCWSTR path);

// ---- whole files

KVSHARE_API BOOL DeleteFileW(LPCWSTR path);

// Copies a file's content, permissions and modification time; for a link the file it leads to. The copy is written to a
// temporary file and renamed (platform/safe_file.h), so a full disk leaves the target unchanged. An existing target is
// replaced, unless it is read-only; with failIfExists it fails with ERROR_FILE_EXISTS. ERROR_SHARING_VIOLATION if
// source and target are the same file, ERROR_ACCESS_DENIED for folders, devices and pipes.
KVSHARE_API BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists);

// Builds the name of a temporary file: the folder, up to three characters of the prefix, four hexadecimal digits of
// `unique` and ".tmp". buffer has MAX_PATH units. With unique 0 the call picks an unused number and creates the empty
// file. Returns the number, or 0 on failure: ERROR_DIRECTORY for a missing folder, ERROR_BUFFER_OVERFLOW if the
// folder's path is longer than MAX_PATH - 14.
KVSHARE_API UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR buffer);

// ---- the C library's streams

// Opens a file with a mode of the C library plus the platform's additions b, t, x, N, S, R, c, n and ", ccs=...". Two
// of them have an effect here: x, and ccs, which writes the encoding's mark at the start of a new or empty file that is
// opened to be written: FF FE for UTF-16LE and UNICODE, EF BB BF for UTF-8. The caller's bytes follow unchanged. Child
// processes never inherit the file. Null on failure; EINVAL for an invalid mode.
KVSHARE_API FILE* _wfopen(LPCWSTR path, LPCWSTR mode);

// ---- handles

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_FLAG_WRITE_THROUGH = 0x80000000;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};
using LPOVERLAPPED = void*;

// Opens or creates a file; a folder fails with ERROR_ACCESS_DENIED. Returns INVALID_HANDLE_VALUE on failure; CREATE_NEW
// fails with ERROR_FILE_EXISTS. After success with CREATE_ALWAYS or OPEN_ALWAYS the status is ERROR_ALREADY_EXISTS if
// the file existed, else 0. On this system `share` locks nothing: others may open, rename and delete the file. Child
// processes never inherit the handle. templateFile must be null.
KVSHARE_API HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES unused, DWORD disposition,
                               DWORD flags, HANDLE templateFile);

// Read and write at the handle's position and move it; ERROR_ACCESS_DENIED if the file was opened without GENERIC_READ
// or GENERIC_WRITE. Fewer bytes are read only at the end of the file; there the result is TRUE with 0 bytes. If a write
// fails halfway, `written` (not null) has the number of written bytes. overlapped must be null.
KVSHARE_API BOOL ReadFile(HANDLE file, void* target, DWORD bytes, LPDWORD read, LPOVERLAPPED overlapped);
KVSHARE_API BOOL WriteFile(HANDLE file, const void* source, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped);

// Moves the position. It may be after the end; before the start fails with ERROR_NEGATIVE_SEEK. Optional: position.
KVSHARE_API BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD from);
KVSHARE_API BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
// Shortens the file, or extends it with zeros, to the handle's position. Needs GENERIC_WRITE.
KVSHARE_API BOOL SetEndOfFile(HANDLE file);
// Writes the content to the disk before it returns. Needs GENERIC_WRITE.
KVSHARE_API BOOL FlushFileBuffers(HANDLE file);

#endif
