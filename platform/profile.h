// Profile files, INI text of [sections] with key=value lines, under the platform's names.
//
// Reading. A line whose first character that is not blank is ';' is a comment; '#' begins none, and a ';' further on is
// text. Blanks (space, TAB, VT) around a section's name, a key and a value don't count; the first ']' ends a section's
// name, without one the line's end does; one pair of " or ' around a whole value is taken off. Names compare without
// case. Of several sections or keys of one name the first is found; lists have them all. A line without '=' is no key,
// nor is one ahead of the first section. Lines end with CR LF, CR or LF; what stands behind a NUL in a line is not
// read.
//
// Writing. A changed or new line is key=value without blanks and ends with CR LF, nothing is quoted or escaped, and a
// name keeps the case that stands in the file; a new key goes behind the last line of its section that is not blank, a
// new section to the end of the file. Every other byte of the file stays. The file is written beside and renamed
// (safe_file.h), so a call either did all or nothing; a link stays one. Writers of one folder, also in other processes,
// wait for one another up to ten seconds (then: ERROR_SHARING_VIOLATION), so that no value is lost; file systems
// without locks can't promise that. Each call writes the whole file and brings it to the disk: many keys at once are
// WritePrivateProfileSectionW's.
//
// A file that begins with FF FE is UTF-16LE and stays so. Any other is UTF-8, a mark ahead of it is kept, and bytes
// that are none come out as U+FFFD and stay in the file. A new file is UTF-8 without a mark. A file above 32 MiB is
// neither read nor written (ERROR_FILE_TOO_LARGE).
//
// Of the arguments only spaces at the ends are removed. Paths are those of paths.h, a relative one begins at the
// current folder. Results come from the file as it is now: a call sees every write that ended before it began. What
// can't be found or read gives the default or an empty list and its reason in GetLastError, ERROR_FILE_NOT_FOUND for a
// missing section or key as well. Any thread may call.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

// Gives the value of a key to a buffer of that many units. The result is its length; what doesn't fit is cut to
// units - 1, with ERROR_MORE_DATA. A missing key gives the default without the spaces at its end; a null default is
// empty. A null key asks for the names of the section's keys, a null section for those of all sections, both as lists:
// each name with a NUL, and one NUL more at the end, which the result doesn't count; one that doesn't fit is cut to
// units - 2. Names that are empty are left out of lists of names. 0 units give 0.
KVSHARE_API DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultText, LPWSTR buffer,
                                           DWORD units, LPCWSTR path);

// The value as a number: an optional sign and digits, what follows is ignored. A missing key gives the default, a text
// that doesn't begin with a number 0; above 32 bits the low ones count.
KVSHARE_API UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, LONG defaultNumber, LPCWSTR path);

// The list of the sections' names, as above.
KVSHARE_API DWORD GetPrivateProfileSectionNamesW(LPWSTR buffer, DWORD units, LPCWSTR path);

// The list of a section's keys with their values, each as key=value. Here a value keeps its quotes.
KVSHARE_API DWORD GetPrivateProfileSectionW(LPCWSTR section, LPWSTR buffer, DWORD units, LPCWSTR path);

// Writes the value of a key, making the file, the section and the key as needed. A null value removes the key (the
// first, if there are several), a null key the section with all that stands in it; removing what isn't there is done
// at once and makes no file. A null section is refused (ERROR_INVALID_PARAMETER). Nothing looks whether the
// file's form can hold the texts: with a line end, or a ']' or '=' in a name, they are written as they stand and read
// as what they then are.
KVSHARE_API BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path);

// Writes a list of key=value in the place of all that the section has; its comments and blank lines stay. Null removes
// the section.
KVSHARE_API BOOL WritePrivateProfileSectionW(LPCWSTR section, LPCWSTR list, LPCWSTR path);

#endif
