// Profile files, under the platform's names: INI text with [sections] and key=value lines.
//
// Reading. A line whose first non-blank character is ';' is a comment; '#' and a later ';' are ordinary text. Blanks
// (space, TAB, VT) around a section's name, a key and a value are ignored. A section's name ends at the first ']', or
// at the line's end. One pair of " or ' around a whole value is removed. Names are compared without case
// (platform/text.h). If a section or key occurs several times, the first one is found; lists contain all of them. A
// line without '=', or before the first section, is not a key. Lines end with CR LF, CR or LF; text after a NUL in a
// line is ignored.
//
// Writing. A changed or new line is key=value without blanks, ends with CR LF, and is not quoted or escaped. Names keep
// the case of the file. A new key goes after the last non-blank line of its section, a new section to the end of the
// file. All other bytes stay. The file is written to a temporary file and renamed (safe_file.h), so a call changes
// everything or nothing; a link stays a link. Writers of one folder, in this and other processes, wait for each other
// up to kProfileLockSeconds (then ERROR_SHARING_VIOLATION), so that no value is lost; on file systems without locks
// values can be lost. Every call writes the whole file to the disk: use WritePrivateProfileSectionW for many keys.
//
// A file keeps its encoding. One that begins with FF FE is UTF-16LE; one with the UTF-8 mark, or whose bytes are UTF-8,
// is UTF-8; a new file is UTF-8 without a mark. A file without a mark that is not UTF-8 is windows-1252. If it is not
// UTF-8 and yet has UTF-8 characters, it mixes two encodings: it is read as UTF-8 and only ASCII can be written.
// Invalid bytes of a UTF-8 file are read as U+FFFD but stay in the file. A text that the file's encoding lacks, and
// half a surrogate pair outside UTF-16, is refused (ERROR_NO_UNICODE_TRANSLATION). UTF-16 without that mark and UTF-32
// are neither read nor written (ERROR_NOT_SUPPORTED), nor is a file above 32 MiB (ERROR_FILE_TOO_LARGE).
//
// Spaces at both ends of arguments are removed. Paths are product paths (paths.h); a relative path starts at the
// current folder. Results always come from the file's current content. If a section, key or file is missing or cannot
// be read, the result is the default or an empty list, and GetLastError has the reason (ERROR_FILE_NOT_FOUND for a
// missing section or key). Any thread may call.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

// How long a write waits for another writer of the folder.
inline constexpr int kProfileLockSeconds = 10;

#ifndef _WIN32

// Copies a key's value to a buffer of `units` units and returns its length. A longer value is cut to units - 1, with
// ERROR_MORE_DATA. A missing key gives the default text without the spaces at its end; null counts as empty.
//
// A null key asks for the names of the section's keys, a null section for the names of all sections. The result is then
// a list: a NUL after each name and one more NUL at the end, which the returned length does not count. A list that
// needs the whole buffer or more is cut to units - 2. Empty names are left out. With units 0 the result is 0.
KVSHARE_API DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultText, LPWSTR buffer,
                                           DWORD units, LPCWSTR path);

// Returns the list of the section names, as above.
KVSHARE_API DWORD GetPrivateProfileSectionNamesW(LPWSTR buffer, DWORD units, LPCWSTR path);

// Returns the list of a section's lines without comments and blank lines: keys and values as key=value, other lines as
// they are without the blanks around them. Values keep their quotes here. A found section, even an empty one, sets the
// status to 0; a null section or buffer fails with ERROR_INVALID_PARAMETER.
KVSHARE_API DWORD GetPrivateProfileSectionW(LPCWSTR section, LPWSTR buffer, DWORD units, LPCWSTR path);

// Writes a key's value and creates file, section and key if necessary. A null value removes the key (the first one of
// that name), a null key removes the section with all its lines. Removing something that does not exist succeeds and
// creates no file. A null section fails with ERROR_FILE_NOT_FOUND, an empty path with ERROR_ACCESS_DENIED. Texts are
// not checked: a line end, or a ']' or '=' in a name, is written as it is and later read by the rules above.
KVSHARE_API BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path);

// Replaces all keys of a section by a list of key=value; comments and blank lines stay. Null removes the section.
KVSHARE_API BOOL WritePrivateProfileSectionW(LPCWSTR section, LPCWSTR list, LPCWSTR path);

#endif
