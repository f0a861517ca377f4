// Listing a folder's entries under the platform's names, with the product's paths (platform/paths.h).
//
// Any thread may call; one thread at a time may use a search. GetLastError has the reason of a failure.
#pragma once

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;  // a symbolic link
inline constexpr DWORD IO_REPARSE_TAG_SYMLINK = 0xA000000C;

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;  // on systems without a creation time, the last change of the entry's metadata
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;  // 0 for a folder
  DWORD dwReserved0;   // IO_REPARSE_TAG_SYMLINK for a link, else 0
  DWORD dwReserved1;
  WCHAR cFileName[MAX_PATH];
  WCHAR cAlternateFileName[14];  // always empty
};
using LPWIN32_FIND_DATAW = WIN32_FIND_DATAW*;

// Starts a search and returns its first entry. The last component of the path is a name or a pattern with * and ?,
// compared without case by the platform's rules: *.* matches every name, *. every name without a dot, and a ? at the
// end of a name or before a dot may match nothing. "." and ".." are entries too.
//
// The names are read now, so files that the caller creates or removes during the search do not disturb it. The other
// fields are read when an entry is returned; an entry that is gone by then is skipped. Entries are sorted by their
// upper-case names. A link has its own mark and the other fields of its target, if there is one. Names that contain a
// backslash are left out, because a product path cannot express them.
//
// Returns INVALID_HANDLE_VALUE on failure: ERROR_FILE_NOT_FOUND if nothing matches or the path ends in a backslash,
// ERROR_PATH_NOT_FOUND for a missing folder, ERROR_DIRECTORY if it is not a folder, ERROR_INVALID_NAME for a pattern in
// the folder's part.
KVSHARE_API HANDLE FindFirstFileW(LPCWSTR path, LPWIN32_FIND_DATAW facts);
// Returns the next entry; FALSE with ERROR_NO_MORE_FILES at the end.
KVSHARE_API BOOL FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW facts);
// Ends the search.
KVSHARE_API BOOL FindClose(HANDLE search);

#endif
