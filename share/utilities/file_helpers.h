// Free helpers for paths, names and times of files.
//
// Paths are product paths (platform/paths.h). The functions return 1 on success and 0 on failure, if they say nothing
// else; on failure the results do not change. Nothing throws, and any thread may call.
#pragma once

#include "framework/text.h"

// ---- parts of paths

// Splits a path into "C:", "\folder\", "name" and ".ext" (from the last point on); a missing part is empty. 0 for an
// empty path.
KVSHARE_API int ExtractPathAndFileName(CString path, CString& drive, CString& folder, CString& name,
                                       CString& extension);
// The drive and the folder. 0 for an empty path.
KVSHARE_API int GetDirectoryName(CString path, CString& folder);

// ---- files

// Create an empty file with a unique name in the folder for temporary files, or in the given folder, and set path to
// it. The name begins with up to three characters of the prefix.
KVSHARE_API int CreateTempFileName(const CString& prefix, CString& path);
KVSHARE_API int CreateTempFileName(const CString& folder, const CString& prefix, CString& path);

// 1 if the folder before the last backslash has a file with the name after it, compared without case. 0 if one of the
// two parts is empty, for example in "\name".
KVSHARE_API int DoesFileExistAtGivenPath(const CString& path);

// ---- characters

// 1 if the text has a character other than ASCII letters, digits and ^ & @ { } [ ] , $ = ! _ # ( ) % . + ~ ` - (a blank
// is not in the list).
KVSHARE_API int HasSpecialCharacters(const CString& text);
// The ASCII letters and digits of the text, in lower case.
KVSHARE_API CString RemoveSpecialCharacters(const CString& text);

// ---- times

// A time as "%d-%02d-%02d %02d:%02d:%02d", year first; empty for a time of 2^63 or more. The second function first
// converts UTC to local time with the zone's present offset (platform/time.h).
KVSHARE_API CString Convert_FILETIME_ToString(const FILETIME& time);
KVSHARE_API CString Convert_FILETIME_LocalFileTime_ToString(const FILETIME& time);
