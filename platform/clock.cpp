#include "platform/clock.h"

#include <atomic>

#include "platform/threads.h"

namespace {

constexpr Clock kSystem = {Sleep, GetSystemTime, [] { return _time64(nullptr); }};

constinit std::atomic<const Clock*> g_clock = nullptr;

}  // namespace

const Clock& CurrentClock() {
  const Clock* clock = g_clock.load(std::memory_order_acquire);
  return clock ? *clock : kSystem;
}

void SetCurrentClock(const Clock* clock) { g_clock.store(clock, std::memory_order_release); }
