// The user's language and formats: dates and times as text, the decimal sign.
//
// The user's language comes from the first of these environment variables that is set: LC_ALL, the category's own
// variable (LC_MESSAGES, LC_TIME, LC_NUMERIC), LANG. "C", "POSIX" and unset variables mean American English. Any thread
// may call. The process's own locale has no effect and is not changed.
#pragma once

#include "platform/errors.h"
#include "platform/time.h"
#include "platform/types.h"

#ifndef _WIN32

inline constexpr LONG ERROR_INVALID_FLAGS = 1004;
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;

// The primary language in the low ten bits, the sub-language above. For a language without a country, the country with
// the most speakers.
KVSHARE_API LANGID GetUserDefaultLangID();
constexpr WORD PRIMARYLANGID(LANGID language) { return language & 0x3FF; }
constexpr WORD SUBLANGID(LANGID language) { return WORD(language >> 10); }

// Format a date or a time by a picture. A null date or time means now; the day of the week is computed from the date.
// Both return the number of units written, with the terminator; with units 0, the size needed; 0 on failure:
// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER for a date that does not exist or a null picture,
// ERROR_INVALID_FLAGS unless flags is 0.
//
// Dates: d, dd are the day, ddd, dddd its name; M, MM the month, MMM, MMMM its name; y, yy the year without century,
// yyyy the full year; gg the era. Times: h, hh for 12 hours, H, HH for 24; m, mm; s, ss; t, tt for AM or PM, the first
// letter or all. Double letters have a leading zero. Text in single quotes is copied, two single quotes give one; other
// characters are copied.
KVSHARE_API int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* date, LPCWSTR picture, LPWSTR buffer,
                               int units);
KVSHARE_API int GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* time, LPCWSTR picture, LPWSTR buffer,
                               int units);

inline constexpr DWORD LOCALE_SDECIMAL = 0x0E;
// Text that depends on the locale; the only kind is LOCALE_SDECIMAL, the decimal sign. Results as above; another kind
// fails with ERROR_INVALID_FLAGS.
KVSHARE_API int GetLocaleInfoW(LCID locale, DWORD kind, LPWSTR buffer, int units);

#endif
