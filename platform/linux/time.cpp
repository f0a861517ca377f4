// Calendar fields: times of the C library with its thread-safe calls, file times with the calendar of <chrono>.
#include "platform/time.h"

#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/linux/errno_status.h"
#include "platform/linux/file_times.h"

namespace {

static_assert(sizeof(time_t) == sizeof(__time64_t), "the system's time has 64 bits");

template <tm* (*Convert)(const time_t*, tm*)>
int ToFields(std::tm* fields, const __time64_t* time) {
  if (!fields) return EINVAL;
  if (time) {
    const time_t seconds = *time;
    if (Convert(&seconds, fields)) return 0;
  }
  std::memset(fields, 0xFF, sizeof *fields);
  return EINVAL;
}

}  // namespace

int _localtime64_s(std::tm* fields, const __time64_t* time) { return ToFields<localtime_r>(fields, time); }

int _gmtime64_s(std::tm* fields, const __time64_t* time) { return ToFields<gmtime_r>(fields, time); }

__time64_t _mktime64(std::tm* fields) { return fields ? mktime(fields) : -1; }

__time64_t _time64(__time64_t* time) {
  const __time64_t now = ::time(nullptr);
  if (time) *time = now;
  return now;
}

void GetSystemTime(LPSYSTEMTIME time) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  const FILETIME units = FileTimeOf(now);
  FileTimeToSystemTime(&units, time);
}

DWORD GetTickCount() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return DWORD(ULONGLONG(now.tv_sec) * 1000 + ULONGLONG(now.tv_nsec) / 1'000'000);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime) {
  using namespace std::chrono;
  const year_month_day date(year(time->wYear), month(time->wMonth), day(time->wDay));
  if (time->wYear < 1601 || time->wYear > 30827 || !date.ok() || time->wHour > 23 || time->wMinute > 59 ||
      time->wSecond > 59 || time->wMilliseconds > 999)
    return FailWithStatus(ERROR_INVALID_PARAMETER);
  const milliseconds since1601 = sys_days(date) - sys_days(1601y / January / 1) + hours(time->wHour) +
                                 minutes(time->wMinute) + seconds(time->wSecond) + milliseconds(time->wMilliseconds);
  *fileTime = FileTimeOf(ULONGLONG(since1601.count()) * 10'000);
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* time, LPSYSTEMTIME fields) {
  using namespace std::chrono;
  const ULONGLONG units = UnitsOf(*time);
  if (units >> 63) return FailWithStatus(ERROR_INVALID_PARAMETER);
  constexpr sys_days kFirst = 1601y / January / 1;
  const ULONGLONG milliseconds_in_day = units / 10'000 % 86'400'000;
  const sys_days day = kFirst + days(units / (10'000ULL * 86'400'000));
  const year_month_day date(day);
  *fields = {WORD(int(date.year())),
             WORD(unsigned(date.month())),
             WORD(weekday(day).c_encoding()),
             WORD(unsigned(date.day())),
             WORD(milliseconds_in_day / 3'600'000),
             WORD(milliseconds_in_day / 60'000 % 60),
             WORD(milliseconds_in_day / 1000 % 60),
             WORD(milliseconds_in_day % 1000)};
  return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* universal, FILETIME* local) {
  const time_t now = ::time(nullptr);
  tm fields = {};
  localtime_r(&now, &fields);
  const ULONGLONG moved = UnitsOf(*universal) + ULONGLONG(fields.tm_gmtoff * kFileTimeUnits);
  if ((UnitsOf(*universal) | moved) >> 63) return FailWithStatus(ERROR_INVALID_PARAMETER);
  *local = FileTimeOf(moved);
  return TRUE;
}
