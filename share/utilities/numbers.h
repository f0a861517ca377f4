// Small helpers on numbers. Nothing fails and any thread may call.
#pragma once

#include "platform/types.h"

// Rounds the value to a multiple of 10 * RESABS (companions/geometry/constants.h), by default to five decimals. The
// sign does not matter: a value and its opposite round to opposite results.
//
// The value is rounded twice, to RESABS and then to 10 * RESABS, and an exact half is rounded down each time: 14.6
// RESABS becomes 15 RESABS, then 10 RESABS. Kept for existing files, which hold such values. Below 2147483647 the
// result is the double nearest to the multiple if a whole number of steps of 10 * RESABS makes 1; otherwise the error
// of one multiplication remains.
//
// With flag 1, a value that would become 0 is returned unchanged. A value that is not finite or too large is returned
// unchanged, and so is every value while RESABS is 0, negative or not finite.
KVSHARE_API double RoundOffDouble(double value, int flag);

// Returns the value; -1 if it is above 0x7FFFFFFF.
KVSHARE_API int size_t2int(ULONGLONG value);
