// Threads, implemented with pthreads.
#include "platform/threads.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "platform/linux/errno_status.h"
#include "platform/linux/handle_table.h"
#include "platform/linux/signal_stack.h"

namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION::storage));
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION));

pthread_mutex_t* Mutex(LPCRITICAL_SECTION section) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(section->storage));
}

// The address range of the calling thread's stack.
struct StackRange {
  std::uintptr_t low = 0;
  std::uintptr_t high = 0;
};

// This thread's range; high is 0 until it is known.
KV_FAST_THREAD_LOCAL constinit StackRange t_stack;

[[gnu::noinline]] void FindStackRange() {
  StackRange& range = t_stack;
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) throw std::bad_alloc();
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  if (pthread_attr_getstack(&attributes, &lowest, &size) == 0 && pthread_attr_getguardsize(&attributes, &guard) == 0) {
    // The guard area is inside the range for some threads and outside for others: always exclude it.
    range.low = reinterpret_cast<std::uintptr_t>(lowest) + guard;
    range.high = reinterpret_cast<std::uintptr_t>(lowest) + size;
  }
  pthread_attr_destroy(&attributes);
}

// The calls of HoldOffSuspension that AllowSuspension has not ended.
constinit thread_local int t_held_off = 0;

}  // namespace

DWORD GetCurrentThreadId() {
  // After a fork the child's thread has another number than the cached one, so the process is compared.
  thread_local pid_t process = 0;
  thread_local DWORD id = 0;
  if (process != getpid()) {
    process = getpid();
    id = DWORD(gettid());
  }
  return id;
}

// ---- threads

namespace {

using SteadyClock = std::chrono::steady_clock;

// Counts the ends of all threads and wakes the waiting ones. Never destroyed, because threads may outlive static
// objects.
struct ThreadExits {
  std::mutex lock;
  std::condition_variable changed;
  ULONGLONG count = 0;
};

ThreadExits& Exits() {
  static auto* exits = new ThreadExits;
  return *exits;
}

class Thread : public WaitableObject {
 public:
  // Waits until the thread has published its number.
  DWORD AwaitId() const {
    id_.wait(0, std::memory_order_acquire);
    return id_.load(std::memory_order_acquire);
  }
  void PublishId(DWORD id) {
    id_.store(id, std::memory_order_release);
    id_.notify_all();
  }

  int Wait(int milliseconds) const override {
    ThreadExits& exits = Exits();
    std::unique_lock guard(exits.lock);
    const auto ended = [&] { return ended_; };
    if (milliseconds >= 0) return exits.changed.wait_for(guard, std::chrono::milliseconds(milliseconds), ended);
    exits.changed.wait(guard, ended);
    return 1;
  }
  void End() {
    ThreadExits& exits = Exits();
    const std::lock_guard guard(exits.lock);
    ended_ = true;
    ++exits.count;
    exits.changed.notify_all();
  }

  // Change the suspend count and return the count before; on failure DWORD(-1), with the last status set.
  DWORD Suspend() {
    const std::lock_guard guard(lock_);
    const DWORD before = suspended_;
    if (Wait(0) > 0) return Refuse(ERROR_ACCESS_DENIED);
    if (before == MAXIMUM_SUSPEND_COUNT) return Refuse(ERROR_SIGNAL_REFUSED);
    ++suspended_;
    return before;
  }
  DWORD Resume() {
    const std::lock_guard guard(lock_);
    const DWORD before = suspended_;
    if (Wait(0) > 0) return Refuse(ERROR_ACCESS_DENIED);
    if (before > 0 && --suspended_ == 0) resumed_.notify_all();
    return before;
  }
  void WaitWhileSuspended() {
    if (suspended_ == 0) return;
    std::unique_lock guard(lock_);
    resumed_.wait(guard, [&] { return suspended_ == 0; });
  }

 private:
  static DWORD Refuse(LONG status) { return FailWithStatus(status) ? 0 : DWORD(-1); }

  std::atomic<DWORD> id_ = 0;
  bool ended_ = false;  // protected by ThreadExits::lock
  std::mutex lock_;
  std::condition_variable resumed_;
  std::atomic<DWORD> suspended_ = 0;  // changed under lock_
};

// The thread object of a thread that CreateThread started; else null.
thread_local std::shared_ptr<Thread> t_thread;

// Its destructor runs after the thread's other thread-local data is destroyed, so that the thread's end is its last
// visible action.
pthread_key_t EndKey() {
  static const pthread_key_t key = [] {
    pthread_key_t created = 0;
    pthread_key_create(&created, [](void* thread) {
      const std::unique_ptr<std::shared_ptr<Thread>> ending(static_cast<std::shared_ptr<Thread>*>(thread));
      (*ending)->End();
    });
    return created;
  }();
  return key;
}

struct Start {
  std::shared_ptr<Thread> thread;
  LPTHREAD_START_ROUTINE routine;
  void* parameter;
};

void* RunThread(void* argument) {
  const std::unique_ptr<Start> start(static_cast<Start*>(argument));
  t_thread = start->thread;
  pthread_setspecific(EndKey(), new std::shared_ptr<Thread>(start->thread));
  UseSignalStackLikeOthers();
  t_thread->PublishId(GetCurrentThreadId());
  SuspensionPoint();
  start->routine(start->parameter);
  return nullptr;
}

}  // namespace

HANDLE CreateThread(SECURITY_ATTRIBUTES*, std::size_t stackBytes, LPTHREAD_START_ROUTINE routine, void* parameter,
                    DWORD, LPDWORD id) {
  auto thread = std::make_shared<Thread>();
  auto start = std::make_unique<Start>(Start{thread, routine, parameter});
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  if (stackBytes > 0) pthread_attr_setstacksize(&attributes, std::max<std::size_t>(stackBytes, PTHREAD_STACK_MIN));
  pthread_t unused = 0;
  const int failure = pthread_create(&unused, &attributes, RunThread, start.get());
  pthread_attr_destroy(&attributes);
  if (failure != 0) {
    FailWithStatus(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  static_cast<void>(start.release());  // now owned by the thread
  const DWORD number = thread->AwaitId();
  if (id) *id = number;
  return AddHandle(std::move(thread));
}

DWORD SuspendAtPoint(HANDLE handle) {
  const auto thread = FindHandle<Thread>(handle);
  return thread ? thread->Suspend() : DWORD(-1);
}

DWORD ResumeAtPoint(HANDLE handle) {
  const auto thread = FindHandle<Thread>(handle);
  return thread ? thread->Resume() : DWORD(-1);
}

void SuspensionPoint() {
  if (t_thread && t_held_off == 0) t_thread->WaitWhileSuspended();
}

void HoldOffSuspension() { ++t_held_off; }

void AllowSuspension() { --t_held_off; }

// ---- waiting

namespace {

class Deadline {
 public:
  explicit Deadline(DWORD milliseconds)
      : endless_(milliseconds == INFINITE), end_(SteadyClock::now() + std::chrono::milliseconds(milliseconds)) {}
  bool HasPassed() const { return !endless_ && SteadyClock::now() >= end_; }
  // The remaining milliseconds in the form that Wait expects.
  int Left() const {
    if (endless_) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - SteadyClock::now()).count();
    return int(std::clamp<long long>(left, 0, INT_MAX));
  }

 private:
  bool endless_;
  SteadyClock::time_point end_;
};

DWORD WaitUntil(const WaitableObject& object, const Deadline& deadline) {
  for (;;) {
    const int result = object.Wait(deadline.Left());
    if (result > 0) return WAIT_OBJECT_0;
    if (result == 0 && deadline.HasPassed()) return WAIT_TIMEOUT;
    if (result < 0 && errno != EINTR) {
      FailWithErrno(errno);
      return WAIT_FAILED;
    }
  }
}

using Waitables = std::vector<std::shared_ptr<WaitableObject>>;

// The end of a process wakes nobody, so processes are polled.
constexpr auto kPollInterval = std::chrono::milliseconds(10);

DWORD WaitForFirst(const Waitables& objects, const Deadline& deadline) {
  ThreadExits& exits = Exits();
  const bool processes = !std::all_of(objects.begin(), objects.end(),
                                      [](const auto& object) { return dynamic_cast<const Thread*>(object.get()); });
  for (;;) {
    std::unique_lock guard(exits.lock);
    const ULONGLONG before = exits.count;
    guard.unlock();
    for (std::size_t at = 0; at < objects.size(); ++at) {
      if (objects[at]->Wait(0) > 0) return DWORD(WAIT_OBJECT_0 + at);
    }
    if (deadline.HasPassed()) return WAIT_TIMEOUT;
    guard.lock();
    const auto another = [&] { return exits.count != before; };
    const int left = deadline.Left();
    if (processes) {
      exits.changed.wait_for(guard, kPollInterval, another);
    } else if (left < 0) {
      exits.changed.wait(guard, another);
    } else {
      exits.changed.wait_for(guard, std::chrono::milliseconds(left), another);
    }
  }
}

}  // namespace

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
  if (count == 0 || !handles) {
    FailWithStatus(ERROR_INVALID_PARAMETER);
    return WAIT_FAILED;
  }
  Waitables objects;
  for (DWORD at = 0; at < count; ++at) {
    objects.push_back(FindHandle<WaitableObject>(handles[at]));
    if (!objects.back()) return WAIT_FAILED;
  }
  const Deadline deadline(milliseconds);
  if (!all) return WaitForFirst(objects, deadline);
  for (const auto& object : objects) {
    if (const DWORD result = WaitUntil(*object, deadline); result != WAIT_OBJECT_0) return result;
  }
  return WAIT_OBJECT_0;
}

// ---- pausing and locks

void Sleep(DWORD milliseconds) {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  do {
    timespec left = {time_t(milliseconds / 1000), long(milliseconds % 1000) * 1'000'000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
  } while (milliseconds == INFINITE);
}

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(new (section->storage) pthread_mutex_t, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) { pthread_mutex_destroy(Mutex(section)); }

void EnterCriticalSection(LPCRITICAL_SECTION section) { pthread_mutex_lock(Mutex(section)); }

void LeaveCriticalSection(LPCRITICAL_SECTION section) { pthread_mutex_unlock(Mutex(section)); }

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) { return pthread_mutex_trylock(Mutex(section)) == 0; }

// ---- stack

std::size_t StackBytesLeft() {
  if (t_stack.high == 0) FindStackRange();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > t_stack.low && here < t_stack.high ? here - t_stack.low : 0;
}
