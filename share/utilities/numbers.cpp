// Rounding to multiples of the tolerance, and narrowing.
#include "share/utilities/numbers.h"

#include <cmath>

#include "companions/geometry/constants.h"

namespace {

// Rounds to the nearest whole number, and an exact half down.
double RoundHalfDown(double value) {
  double whole = 0;
  const double fraction = std::modf(value, &whole);
  return fraction > 0.5 ? whole + 1 : whole;
}

// steps * step. If a whole number of steps makes 1, it divides by that number instead: the division is rounded once and
// so gives the nearest double, the multiplication does not.
double MultipleOf(double steps, double step) {
  const double steps_in_unit = std::nearbyint(1.0 / step);
  const bool divides = std::abs(steps_in_unit * step - 1) < 1e-12;
  return divides ? steps / steps_in_unit : steps * step;
}

}  // namespace

double RoundOffDouble(double value, int flag) {
  constexpr double kLargestExact = 2147483647.0;
  const double scaled = std::abs(value) * (1.0 / RESABS);
  const double step = 1.0 / (1.0 / (RESABS * 10.0));
  if (!std::isfinite(scaled) || !std::isfinite(step) || step <= 0) return value;
  const double steps = RoundHalfDown(RoundHalfDown(scaled) / 10.0);
  double rounded = steps * step;
  if (rounded < kLargestExact) rounded = MultipleOf(steps, step);
  if (rounded == 0 && flag == 1) return value;
  return std::copysign(rounded, value);
}

int size_t2int(ULONGLONG value) { return value > 0x7FFFFFFF ? -1 : int(value); }
