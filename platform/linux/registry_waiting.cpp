// How long a call waits for other processes.
#include <algorithm>
#include <ctime>
#include <utility>

#include "platform/linux/registry_connection.h"
#include "platform/registry_files.h"

namespace {

constexpr LONGLONG kLongestWait_us = 30'000'000;
constexpr LONGLONG kStep_us = 100;
constexpr LONGLONG kLongestStep_us = 3'000;

thread_local RegistryWaitLimit* t_limit = nullptr;  // the innermost
thread_local LONGLONG t_call_started_us = 0;

LONGLONG Now_us() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * LONGLONG{1'000'000} + now.tv_nsec / 1000;
}

}  // namespace

// The steps get a little longer each time. They are short because a write takes about 20 us.
int kvregistry::WaitForOthers(void*, int tries) {
  if (tries == 0) t_call_started_us = Now_us();
  if (Now_us() - t_call_started_us > kLongestWait_us) return 0;
  return RegistryWaitLimit::Sleep(std::min(kStep_us * (tries + 1), kLongestStep_us));
}

RegistryWaitLimit::RegistryWaitLimit(int most_ms)
    : outer_(std::exchange(t_limit, this)), left_us_(LONGLONG{most_ms} * 1000) {}

RegistryWaitLimit::~RegistryWaitLimit() { t_limit = outer_; }

bool RegistryWaitLimit::Sleep(LONGLONG step_us) {
  for (const RegistryWaitLimit* limit = t_limit; limit; limit = limit->outer_)
    if (limit->left_us_ <= 0) return false;
  const LONGLONG before = Now_us();
  const timespec time{0, long(step_us) * 1000};
  nanosleep(&time, nullptr);
  const LONGLONG slept = Now_us() - before;  // a busy machine wakes late
  for (RegistryWaitLimit* limit = t_limit; limit; limit = limit->outer_) limit->left_us_ -= slept;
  return true;
}
