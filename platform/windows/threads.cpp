// Suspension at points of the caller's choice, and the stack's limits. The system's own suspension stops a thread
// anywhere, also where it holds the heap's lock, and then every thread that allocates waits for it.
#include "platform/threads.h"

#include <atomic>
#include <map>

namespace {

// A suspended thread. Its handle stays open, so that no other thread gets its number.
struct Suspended {
  HANDLE thread;
  DWORD count;
};

SRWLOCK g_lock = SRWLOCK_INIT;
CONDITION_VARIABLE g_resumed = CONDITION_VARIABLE_INIT;
std::atomic<int> g_suspended = 0;  // threads in the table

// By the threads' numbers. Never destroyed, because threads may outlive static objects.
std::map<DWORD, Suspended>& Table() {
  static auto* table = new std::map<DWORD, Suspended>;
  return *table;
}

class Guard {
 public:
  Guard() { AcquireSRWLockExclusive(&g_lock); }
  ~Guard() { ReleaseSRWLockExclusive(&g_lock); }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
};

DWORD Refuse(DWORD status) {
  SetLastError(status);
  return DWORD(-1);
}

// The number of a running thread; 0 with the last status for another handle.
DWORD RunningThread(HANDLE thread) {
  const DWORD id = GetThreadId(thread);
  if (id == 0 || WaitForSingleObject(thread, 0) != WAIT_OBJECT_0) return id;
  SetLastError(ERROR_ACCESS_DENIED);
  return 0;
}

thread_local int t_heldOff = 0;

// The lowest pages of a stack: the guard, and the room in which the system reports an overflow.
constexpr ULONG_PTR kReserve = 16 * 1024;

}  // namespace

DWORD SuspendAtPoint(HANDLE thread) {
  const Guard guard;
  const DWORD id = RunningThread(thread);
  if (id == 0) return DWORD(-1);
  if (const auto found = Table().find(id); found != Table().end()) {
    if (found->second.count == MAXIMUM_SUSPEND_COUNT) return Refuse(ERROR_SIGNAL_REFUSED);
    return found->second.count++;
  }
  HANDLE own = nullptr;
  if (!DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &own, 0, FALSE, DUPLICATE_SAME_ACCESS))
    return DWORD(-1);
  Table()[id] = {own, 1};
  ++g_suspended;
  return 0;
}

DWORD ResumeAtPoint(HANDLE thread) {
  const Guard guard;
  const DWORD id = RunningThread(thread);
  if (id == 0) return DWORD(-1);
  const auto found = Table().find(id);
  if (found == Table().end()) return 0;
  const DWORD before = found->second.count--;
  if (before == 1) {
    CloseHandle(found->second.thread);
    Table().erase(found);
    --g_suspended;
    WakeAllConditionVariable(&g_resumed);
  }
  return before;
}

void SuspensionPoint() {
  if (g_suspended == 0 || t_heldOff > 0) return;
  const Guard guard;
  while (Table().contains(GetCurrentThreadId())) SleepConditionVariableSRW(&g_resumed, &g_lock, INFINITE, 0);
}

void HoldOffSuspension() { ++t_heldOff; }

void AllowSuspension() { --t_heldOff; }

std::size_t StackBytesLeft() {
  ULONG_PTR low = 0, high = 0;
  GetCurrentThreadStackLimits(&low, &high);
  low += kReserve;
  const auto here = reinterpret_cast<ULONG_PTR>(__builtin_frame_address(0));
  return here > low && here < high ? here - low : 0;
}
