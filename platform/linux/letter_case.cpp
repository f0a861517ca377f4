#include "platform/linux/letter_case.h"

#include <unicode/uchar.h>

namespace {

bool IsInUnicode51(UChar32 character) {
  UVersionInfo age;
  u_charAge(character, age);
  return age[0] > 0 && (age[0] < 5 || (age[0] == 5 && age[1] <= 1));
}

// Unicode never takes a pair of two existing letters apart and never makes one, so later versions give the same pairs.
bool IsPair(UChar32 lower, UChar32 upper) {
  return lower != upper && lower <= 0xFFFF && upper <= 0xFFFF && u_tolower(upper) == lower &&
         u_toupper(lower) == upper && IsInUnicode51(lower) && IsInUnicode51(upper);
}

}  // namespace

WCHAR UpperOfOtherUnit(WCHAR unit) {
  const UChar32 upper = u_toupper(unit);
  return upper != unit && IsPair(unit, upper) ? WCHAR(upper) : unit;
}

WCHAR LowerOfOtherUnit(WCHAR unit) {
  const UChar32 lower = u_tolower(unit);
  return lower != unit && IsPair(lower, unit) ? WCHAR(lower) : unit;
}
