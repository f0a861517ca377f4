// Seconds since 1970 UTC, and the times of files, to calendar fields and back. Any thread may call.
#pragma once

#include <ctime>

#include "platform/types.h"

#ifndef _WIN32

using __time64_t = LONGLONG;

// Fill fields with the local (universal) time and give 0; EINVAL with fields set to -1 where a pointer is null or the
// time has no calendar date here.
KVSHARE_API int _localtime64_s(std::tm* fields, const __time64_t* time);
KVSHARE_API int _gmtime64_s(std::tm* fields, const __time64_t* time);
// The time of local fields, which it also normalises; -1 if there is none.
KVSHARE_API __time64_t _mktime64(std::tm* fields);
KVSHARE_API __time64_t _time64(__time64_t* time);

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;      // from 1
  WORD wDayOfWeek;  // from 0, Sunday
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

// The present time in UTC.
KVSHARE_API void GetSystemTime(LPSYSTEMTIME time);
// FALSE with ERROR_INVALID_PARAMETER, and the file time left alone, for a time that does not exist. The day of the week
// does not count.
KVSHARE_API BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime);

// Calendar fields of a file's time, in whatever zone it is. FALSE with ERROR_INVALID_PARAMETER for a time of 2^63 and
// above.
KVSHARE_API BOOL FileTimeToSystemTime(const FILETIME* time, LPSYSTEMTIME fields);
// Moves a universal time to the local zone by the zone's present distance, also where another held at that time: that
// is the platform's way. Fails as above, and where the result would be no time.
KVSHARE_API BOOL FileTimeToLocalFileTime(const FILETIME* universal, FILETIME* local);

#endif
