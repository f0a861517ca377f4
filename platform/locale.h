// The user's language, dates and times as text, and the time of day.
//
// The user's language is that of LC_ALL, the category's own variable (LC_MESSAGES, LC_TIME, LC_NUMERIC) or LANG, the
// first that is set; "C", "POSIX" and none are American English. Any thread may call, and the process's own locale
// neither counts nor changes.
#pragma once

#include "platform/errors.h"
#include "platform/time.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr LONG ERROR_INVALID_FLAGS = 1004;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;

// The primary language in the low ten bits, the sub-language above. A language without a country has that of most of
// its speakers.
KVSHARE_API LANGID GetUserDefaultLangID();
constexpr WORD PRIMARYLANGID(LANGID language) { return language & 0x3FF; }
constexpr WORD SUBLANGID(LANGID language) { return WORD(language >> 10); }

// The present time on the user's clock.
KVSHARE_API void GetLocalTime(LPSYSTEMTIME time);

// Write a date or a time by a picture. Null for date or time is now; the day of the week is computed, not believed.
// Both give the number of units written with the terminator; with units 0 the size needed; 0 on failure:
// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER for a date that does not exist or a null picture,
// ERROR_INVALID_FLAGS unless flags is 0.
//
// Dates: d, dd the day, ddd, dddd its name; M, MM the month, MMM, MMMM its name; y, yy the year in the century, yyyy
// the year; gg the era. Times: h, hh of 12 hours, H, HH of 24; m, mm; s, ss; t, tt the mark for the half of the day,
// its first letter or whole. Double letters have a leading zero. Text between single quotes stands as it is, two of
// them are one; other characters stand for themselves.
KVSHARE_API int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* date, LPCWSTR picture, LPWSTR buffer,
                               int units);
KVSHARE_API int GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* time, LPCWSTR picture, LPWSTR buffer,
                               int units);

inline constexpr DWORD LOCALE_SDECIMAL = 0x0E;
// A fact of the locale as text: LOCALE_SDECIMAL, the decimal sign. Results as above; another kind is
// ERROR_INVALID_FLAGS.
KVSHARE_API int GetLocaleInfoW(LCID locale, DWORD kind, LPWSTR buffer, int units);

#endif
