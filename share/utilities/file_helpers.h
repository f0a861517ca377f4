// Free helpers for paths, names and times of files.
//
// Paths are the product's (platform/paths.h). Where nothing else is said, 1 is success and 0 failure, with the results
// left alone; nothing throws and any thread may call.
#pragma once

#include "framework/text.h"

// ---- taking paths apart

// "C:", "\folder\", "name" and ".ext" (from the last point on); a part that is not there is empty. 0 for an empty path.
KVSHARE_API int ExtractPathAndFileName(CString path, CString& drive, CString& folder, CString& name,
                                       CString& extension);
// Drive and folder together. 0 for an empty path.
KVSHARE_API int GetDirectoryName(CString path, CString& folder);

// ---- files

// A new empty file with a unique name that begins with up to three characters of the prefix, in the folder for
// temporary files, or in a given one.
KVSHARE_API int CreateTempFileName(const CString& prefix, CString& path);
KVSHARE_API int CreateTempFileName(const CString& folder, const CString& prefix, CString& path);

// 1 if the folder ahead of the last backslash has a file named like what is behind it, in any case. 0 if either part is
// empty, so for a file in a root without a drive too.
KVSHARE_API int DoesFileExistAtGivenPath(const CString& path);

// ---- characters, of the text as UTF-8

// 1 if there is a character that is no ASCII digit or letter nor one of ^ & @ { } [ ] , $ = ! _ # ( ) % . + ~ ` - (the
// blank is none of them).
KVSHARE_API int HasSpecialCharacters(const CString& text);
// The ASCII digits and letters of the text, capitals as small letters.
KVSHARE_API CString RemoveSpecialCharacters(const CString& text);

// ---- times

// "%d-%02d-%02d %02d:%02d:%02d", year first; empty for a time of 2^63 and above. The second takes a universal time to
// the zone's present distance (platform/time.h).
KVSHARE_API CString Convert_FILETIME_ToString(const FILETIME& time);
KVSHARE_API CString Convert_FILETIME_LocalFileTime_ToString(const FILETIME& time);
