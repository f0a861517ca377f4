// Seconds since 1970 UTC to calendar fields and back. Any thread may call.
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

#endif
