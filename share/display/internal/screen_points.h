// Doubles to whole pixels.
#pragma once

#include <limits>

#include "platform/types.h"

namespace kvdisplay {

// Cuts to the whole number toward zero. A value outside LONG becomes its nearest bound, and NaN becomes 0.
constexpr LONG Truncated(double value) {
  constexpr double kMost = std::numeric_limits<LONG>::max(), kLeast = std::numeric_limits<LONG>::min();
  if (value >= kMost) return std::numeric_limits<LONG>::max();
  if (value <= kLeast) return std::numeric_limits<LONG>::min();
  return value == value ? LONG(value) : 0;
}

}  // namespace kvdisplay
