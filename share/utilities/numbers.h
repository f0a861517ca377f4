// Small helpers on numbers. Nothing fails and any thread may call.
#pragma once

#include "platform/types.h"

// The value rounded to the raster of ten times RESABS (companions/geometry/constants.h), by default to five decimals,
// with the sign put back last, so that a value and its opposite round alike.
//
// It is rounded twice, to RESABS and then to ten times that, each time down at exactly a half: 14.6 RESABS becomes 15,
// then 1 times the raster. That is required. Below 2147483647 the result is the double nearest to the raster's point
// if a whole number of the raster's steps makes 1; otherwise the error of one multiplication stays.
//
// With a flag of 1 a value that rounds to 0 comes back unchanged: one too small for the raster is kept. A value too
// large to be scaled, or not finite, comes back unchanged, and so does every value while RESABS gives no raster.
KVSHARE_API double RoundOffDouble(double value, int flag);

// The value, or -1 if it is above 0x7FFFFFFF.
KVSHARE_API int size_t2int(ULONGLONG value);
