// File times: units of 100 ns since 1601.
#pragma once

#include <ctime>

#include "platform/types.h"

inline constexpr LONGLONG kFileTimeUnits = 10'000'000;  // per second

constexpr ULONGLONG UnitsOf(const FILETIME& time) { return ULONGLONG(time.dwHighDateTime) << 32 | time.dwLowDateTime; }
constexpr FILETIME FileTimeOf(ULONGLONG units) { return {DWORD(units), DWORD(units >> 32)}; }
// A time outside the years 1601 to 30827 becomes the nearest one inside.
constexpr FILETIME FileTimeOf(const timespec& time) {
  constexpr LONGLONG kFirst = -11'644'473'600;
  constexpr LONGLONG kLast = 910'670'515'199;
  if (time.tv_sec < kFirst) return {};
  const LONGLONG seconds = time.tv_sec > kLast ? kLast : time.tv_sec;
  return FileTimeOf(ULONGLONG((seconds - kFirst) * kFileTimeUnits + time.tv_nsec / 100));
}
