// Calendar fields on the C library's reentrant calls.
#include "platform/time.h"

#include <cerrno>
#include <cstring>

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
