// Conversion between times and calendar fields: seconds since 1970 UTC, and file times. Any thread may call.
#pragma once

#include <ctime>

#include "platform/types.h"

#ifndef _WIN32

using __time64_t = LONGLONG;

// Fill `fields` with the local or the universal time and return 0. Return EINVAL, with all fields -1, for a null
// pointer or a time that is too far away to have a date.
KVSHARE_API int _localtime64_s(std::tm* fields, const __time64_t* time);
KVSHARE_API int _gmtime64_s(std::tm* fields, const __time64_t* time);
// Converts local fields to a time, and carries fields outside their range over to the next one. Returns -1 if that is
// not possible, and for null.
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

// The current time in UTC.
KVSHARE_API void GetSystemTime(LPSYSTEMTIME time);
// Milliseconds since the start of the system; begins again at 0 after 49.7 days.
KVSHARE_API DWORD GetTickCount();
// Returns FALSE with ERROR_INVALID_PARAMETER for a time that does not exist; fileTime is then unchanged. wDayOfWeek is
// ignored.
KVSHARE_API BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime);

// Calendar fields of a file time, in the same time zone. FALSE with ERROR_INVALID_PARAMETER for a time of 2^63 or more.
KVSHARE_API BOOL FileTimeToSystemTime(const FILETIME* time, LPSYSTEMTIME fields);
// Converts a universal time to local time by the time zone's current offset, even if another offset was valid at that
// time: existing programs expect the platform's result. Fails as above, also if the result is no valid time.
KVSHARE_API BOOL FileTimeToLocalFileTime(const FILETIME* universal, FILETIME* local);

#endif
