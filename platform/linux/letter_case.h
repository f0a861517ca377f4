// Upper and lower case of single UTF-16 units, by the platform's table: the case pairs of Unicode 5.1 whose letters
// each have one unit and lead to each other. A letter that leads to another pair's letter has no case here: dotless i,
// long s, the micro sign, the final sigma. The table never changes, so stored names keep their order and their
// equality.
#pragma once

#include "platform/types.h"

// For a unit that is not ASCII.
WCHAR UpperOfOtherUnit(WCHAR unit);
WCHAR LowerOfOtherUnit(WCHAR unit);

inline WCHAR UpperUnit(WCHAR unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? WCHAR(unit - 0x20) : unit;
  return UpperOfOtherUnit(unit);
}
inline WCHAR LowerUnit(WCHAR unit) {
  if (unit < 0x80) return unit >= u'A' && unit <= u'Z' ? WCHAR(unit + 0x20) : unit;
  return LowerOfOtherUnit(unit);
}
