// Numbers from text, the same in every locale: the decimal sign is always a point.
//
// All calls skip leading blanks (space, TAB, LF, VT, FF, CR), accept a sign, read the longest number at the start and
// ignore the rest. Text without a number at its start gives 0. No call fails; any thread may call.
#pragma once

#include <string_view>

#include "platform/types.h"

// Reads digits with a point and an exponent, 0x with hexadecimal digits, inf and nan. Too large a number gives
// infinity, too small a number 0.
KVSHARE_API double NumberFromUtf8(std::string_view text);
// The same, into `value`. Returns false and leaves `value` unchanged if the text does not begin with a number.
KVSHARE_API bool ReadNumber(std::string_view text, double& value);
// Reads decimal digits. Numbers out of range give the smallest or largest int.
KVSHARE_API int IntegerFromUtf8(std::string_view text);
