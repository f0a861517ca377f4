// Files and folders, under the platform's names and by the product's paths.
//
// Paths are those of platform/paths.h; a null or empty one fails. The calls of the Windows family give FALSE (or what
// they say) and the reason in GetLastError; those of the C library's family, with the underscore, give -1 or null and
// the reason in errno. Every call may be made on any thread; one handle is used by one thread at a time. A file is
// read-only if nobody may write it; such a file is neither opened for writing nor deleted nor replaced, also for a user
// who could. Nothing translates line ends: text is UTF-8 with LF.
#pragma once

#include <cstdio>

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "platform/types.h"

#ifndef _WIN32

// ---- attributes and access

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

// The attributes, of the target for a link; INVALID_FILE_ATTRIBUTES on failure. A folder is never reported read-only.
KVSHARE_API DWORD GetFileAttributesW(LPCWSTR path);

struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;  // of the last change of the file's facts, where the system keeps no other
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;  // 0 for a folder
};
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };
// The attributes as above, with times and size, into a WIN32_FILE_ATTRIBUTE_DATA; the only level there is.
KVSHARE_API BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, void* facts);

// 0 if the path exists (mode 0), may be written (2), read (4), or both (6), else -1. Another mode is EINVAL.
KVSHARE_API int _waccess(LPCWSTR path, int mode);

inline constexpr int _S_IREAD = 0x100;
inline constexpr int _S_IWRITE = 0x80;
// Makes the file writable for its owner if _S_IWRITE is in mode, else read-only for all. A file always stays readable.
KVSHARE_API int _wchmod(LPCWSTR path, int mode);

// ---- folders

using LPSECURITY_ATTRIBUTES = void*;

// Make one level; ERROR_ALREADY_EXISTS (EEXIST) if anything of the name exists. A drive's own folder is made as needed.
KVSHARE_API BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES unused);
KVSHARE_API int _wmkdir(LPCWSTR path);
// Removes an empty folder, or a link to a folder, whose content stays; ERROR_DIRECTORY for a file.
KVSHARE_API BOOL RemoveDirectoryW(LPCWSTR path);

// ---- whole files

KVSHARE_API BOOL DeleteFileW(LPCWSTR path);
KVSHARE_API int _wremove(LPCWSTR path);

inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
inline constexpr DWORD MOVEFILE_WRITE_THROUGH = 8;
// Renames a file or folder within one file system. Without MOVEFILE_REPLACE_EXISTING an existing target is
// ERROR_ALREADY_EXISTS; with it an existing file is replaced in one step. MOVEFILE_WRITE_THROUGH returns only when the
// new name is on the disk. Renaming to another case of the same name works.
KVSHARE_API BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);

// Copies a file's content, rights and time of writing; a link is copied as what it leads to. The new file is written
// beside and renamed (platform/safe_file.h), so that a full disk leaves the target as it was. With failIfExists a
// target that is there is ERROR_FILE_EXISTS; without, it is replaced unless it is read-only. ERROR_SHARING_VIOLATION if
// both are one file, ERROR_ACCESS_DENIED for folders and for what is no plain file.
KVSHARE_API BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists);

// Makes a name from the folder, up to three characters of the prefix and four digits of unique in hexadecimal, ".tmp"
// behind, into a buffer of MAX_PATH units. With unique 0 it picks a number that is free and makes the empty file. Gives
// the number, or 0 on failure: ERROR_DIRECTORY if there is no such folder, ERROR_BUFFER_OVERFLOW above MAX_PATH - 14.
KVSHARE_API UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR buffer);

// ---- the C library's streams

// A mode of the C library, with the platform's additions b, t, x, N, S, R, c, n and ", ccs=...". Only two of them
// change anything here: x, and ccs=UTF-16LE (or UNICODE), with which a file that is made or emptied, or is empty when
// it is appended to, begins with the mark FF FE; what is written behind it stays the caller's bytes. A child process
// never inherits the file. Null, with EINVAL for a mode that is none.
KVSHARE_API FILE* _wfopen(LPCWSTR path, LPCWSTR mode);

// ---- handles

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;
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

// Opens or makes a file; a folder is ERROR_ACCESS_DENIED. INVALID_HANDLE_VALUE on failure; CREATE_NEW fails with
// ERROR_FILE_EXISTS. CREATE_ALWAYS and OPEN_ALWAYS leave ERROR_ALREADY_EXISTS behind when they found a file, else 0.
// The share mode is the platform's; here nothing is locked, others may always open, rename and delete. A child process
// never inherits the handle. templateFile must be null.
KVSHARE_API HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES unused, DWORD disposition,
                               DWORD flags, HANDLE templateFile);

// Read and write at the handle's position, which moves on. Fewer bytes are read only at the end of the file, where 0
// bytes and TRUE come back. If a write fails on the way, written (which may not be null) tells how far it came.
// overlapped must be null.
KVSHARE_API BOOL ReadFile(HANDLE file, void* target, DWORD bytes, LPDWORD read, LPOVERLAPPED overlapped);
KVSHARE_API BOOL WriteFile(HANDLE file, const void* source, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped);

// Moves the position, which may lie behind the end; ahead of the start is ERROR_NEGATIVE_SEEK. position may be null.
KVSHARE_API BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD from);
KVSHARE_API BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
// Cuts or extends the file, with zeros, to the handle's position.
KVSHARE_API BOOL SetEndOfFile(HANDLE file);
// Returns when the content is on the disk.
KVSHARE_API BOOL FlushFileBuffers(HANDLE file);

#endif
