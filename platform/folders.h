// Walking the entries of a folder, under the platform's names and by the product's paths (platform/paths.h).
//
// Any thread may call; one search is used by one thread at a time. What fails gives the reason in GetLastError.
#pragma once

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;  // a symbolic link
inline constexpr DWORD IO_REPARSE_TAG_SYMLINK = 0xA000000C;

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;  // of the last change of the entry's facts, where the system keeps no other
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;  // 0 for a folder
  DWORD dwReserved0;   // IO_REPARSE_TAG_SYMLINK for a link, else 0
  DWORD dwReserved1;
  WCHAR cFileName[MAX_PATH];
  WCHAR cAlternateFileName[14];  // always empty: there are no second names
};
using LPWIN32_FIND_DATAW = WIN32_FIND_DATAW*;

// Starts a search and gives its first entry. The last component of the path is a name or a pattern of * and ?, compared
// without case by the platform's rules: *.* is every name, *. every name without a point, and a ? at the end of a name
// or ahead of a point may stand for nothing. "." and ".." are entries too.
//
// The folder is read now, so that what the caller makes or removes meanwhile does not disturb the walk; the facts are
// those of the moment at which an entry is given, and one that is gone by then is passed over. Entries come by their
// upper-case names. A link has the mark, and the facts of what it leads to, if it leads anywhere. Names that can't be
// told in the product's form (with a backslash, or no UTF-8) are left out.
//
// INVALID_HANDLE_VALUE on failure: ERROR_FILE_NOT_FOUND if nothing matches or the path ends in a backslash,
// ERROR_PATH_NOT_FOUND if there is no such folder, ERROR_DIRECTORY if it is none, ERROR_INVALID_NAME for a pattern in
// the folder's part.
KVSHARE_API HANDLE FindFirstFileW(LPCWSTR path, LPWIN32_FIND_DATAW facts);
// The next entry; FALSE with ERROR_NO_MORE_FILES at the end.
KVSHARE_API BOOL FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW facts);
// Ends the search.
KVSHARE_API BOOL FindClose(HANDLE search);

#endif
