// Numbers from text, the same in every locale: the decimal sign is the point, whatever the user's is.
//
// All skip leading blanks (space, TAB, LF, VT, FF, CR), take an optional sign, read as far as the text makes a number
// and ignore the rest; what has no number at its beginning is 0. Nothing fails and any thread may call.
#pragma once

#include <string_view>

#include "platform/types.h"

// Digits with a point and an exponent, 0x with hexadecimal digits, inf and nan; what is too large becomes infinite,
// what is too small 0.
KVSHARE_API double NumberFromUtf8(std::string_view text);
// The same into value; false, with the value untouched, if the text doesn't begin with a number.
KVSHARE_API bool ReadNumber(std::string_view text, double& value);
// Decimal digits; what is too large or too small becomes the largest or smallest int.
KVSHARE_API int IntegerFromUtf8(std::string_view text);

#ifndef _WIN32

// The same for wide text; null is 0.
KVSHARE_API double _wtof(LPCWSTR text);
KVSHARE_API int _wtoi(LPCWSTR text);

#endif
