// Paths: the product's text and the system's, and taking paths apart.
//
// The product's path has backslashes, folders end in one, and a drive may stand in front. Every call of files.h takes
// it in that form and turns it into a system path at that moment; nobody else does. On a system without drives, C: is
// the folder KV_DRIVE_C of the environment, or else kestrova/drive_c in the user's data folder (XDG_DATA_HOME,
// ~/.local/share), and so for the other letters; \a\b is the system's /a/b. A component that does not exist as written
// is looked up without case; of several that match, the one whose bytes come first counts. Slashes are taken as
// backslashes, a leading \\?\ is dropped.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

// The system's path in UTF-8, for calls that are handed one. What does not exist stays as written. Empty for null or
// "".
KVSHARE_API std::string SystemPathFromProduct(LPCWSTR path);

// The product's form of a path that comes in from outside, such as the command line: /a/b gives \a\b, and what lies in
// a drive's folder gets the drive, C:\a. A path that already is in the product's form stays as it is. The system's
// names that contain a backslash or are no UTF-8 can't be told in this form.
KVSHARE_API std::basic_string<TCHAR> ProductPathFromSystem(std::string_view path);

#ifndef _WIN32

inline constexpr int _MAX_PATH = 260;
inline constexpr int _MAX_DRIVE = 3;
inline constexpr int _MAX_DIR = 256;
inline constexpr int _MAX_FNAME = 256;
inline constexpr int _MAX_EXT = 256;

// Splits a path into "C:", "\folder\", "name" and ".ext" (from the last point on); a part that is not there is empty.
// The targets have the sizes above and may be null; a part that is too long is cut.
KVSHARE_API void _wsplitpath(LPCWSTR path, LPWSTR drive, LPWSTR folder, LPWSTR name, LPWSTR extension);

// The path from the root on, with "." and ".." resolved in the text; the file need not exist. Gives the length, or the
// size needed with the terminator if it doesn't fit, or 0. filePart, which may be null, receives the place of the last
// component, or null if the path ends in a backslash.
KVSHARE_API DWORD GetFullPathNameW(LPCWSTR path, DWORD units, LPWSTR buffer, LPWSTR* filePart);

// The folder for temporary files (TMPDIR, or \tmp\) with its backslash; length and size as above.
KVSHARE_API DWORD GetTempPathW(DWORD units, LPWSTR buffer);

#endif
