#include "platform/linux/letter_case.h"

#include <unicode/uchar.h>

namespace {

bool IsInUnicode51(UChar32 character) {
  UVersionInfo age;
  u_charAge(character, age);
  return age[0] > 0 && (age[0] < 5 || (age[0] == 5 && age[1] <= 1));
}

// Unicode never takes a pair of two existing letters apart and never makes one, so later versions give the same pairs.
bool AreOldEnough(UChar32 a, UChar32 b) {
  return (a < 0x200 && b < 0x200) || (a <= 0xFFFF && b <= 0xFFFF && IsInUnicode51(a) && IsInUnicode51(b));
}

}  // namespace

WCHAR UpperOfOtherUnit(WCHAR unit) {
  const UChar32 upper = u_toupper(unit);
  return upper != unit && u_tolower(upper) == unit && AreOldEnough(unit, upper) ? WCHAR(upper) : unit;
}

WCHAR LowerOfOtherUnit(WCHAR unit) {
  const UChar32 lower = u_tolower(unit);
  return lower != unit && u_toupper(lower) == unit && AreOldEnough(lower, unit) ? WCHAR(lower) : unit;
}
