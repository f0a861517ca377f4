// Product paths and system paths, and splitting of paths.
//
// A product path has backslashes, a folder ends in one, and a drive may come first. The calls of files.h convert it to
// a system path when they use it; no other code does. On a system without drives, C: is the folder in the environment
// variable KV_DRIVE_C, otherwise kestrova/drive_c in the user's data folder (XDG_DATA_HOME, ~/.local/share); other
// drives work in the same way. \a\b is the system's /a/b. If a component does not exist as written, it is looked up
// without case; if several names match, the one with the smallest bytes is used. Points and spaces at the end of a
// path, and a point at the end of another component, count only where such a name exists. Slashes count as backslashes,
// and a leading \\?\ is ignored.
//
// System names are bytes, and not all of them are UTF-8. A byte that is not part of valid UTF-8 becomes U+DC80 +
// (byte - 0x80) in a product path, half a surrogate pair, and the same byte again in a system path. So each file keeps
// its own path; ToUtf8 shows such a unit as U+FFFD. Any other half pair in a product path becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

// The system path in the system's bytes, for other libraries. Components that do not exist stay as written. Empty for
// null or "".
KVSHARE_API std::string SystemPathFromProduct(LPCWSTR path);

// The product form of a path from outside, such as the command line: /a/b becomes \a\b, and a path in a drive's folder
// gets the drive, C:\a. A product path stays as it is. System names that contain a backslash cannot be expressed in
// this form.
KVSHARE_API std::basic_string<TCHAR> ProductPathFromSystem(std::string_view path);

#ifdef _WIN32

#include <stdlib.h>

#else

inline constexpr int _MAX_PATH = 260;
inline constexpr int _MAX_DRIVE = 3;
inline constexpr int _MAX_DIR = 256;
inline constexpr int _MAX_FNAME = 256;
inline constexpr int _MAX_EXT = 256;

// Splits a path into "C:", "\folder\", "name" and ".ext" (from the last dot on); a missing part is empty. The buffers
// have the sizes above; a part that is too long is cut off. Optional: each buffer.
KVSHARE_API void _wsplitpath(LPCWSTR path, LPWSTR drive, LPWSTR folder, LPWSTR name, LPWSTR extension);

// The full path, with "." and ".." resolved in the text only; the file need not exist. A point at the end of a
// component goes, and all points and spaces at the end of the path. Only a backslash that ends the given path ends the
// result, unless that is a root. Returns the length, or the size needed with the terminator if it does not fit, or 0 on
// failure. Optional: filePart, which receives a pointer to the last component, or null if the path ends in a backslash.
KVSHARE_API DWORD GetFullPathNameW(LPCWSTR path, DWORD units, LPWSTR buffer, LPWSTR* filePart);

// The folder for temporary files (TMPDIR, or \tmp\) with a backslash at its end; length and size as above.
KVSHARE_API DWORD GetTempPathW(DWORD units, LPWSTR buffer);

#endif
