// Threads on pthreads.
#include "platform/threads.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <new>

namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION::storage));
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION));

pthread_mutex_t* Mutex(LPCRITICAL_SECTION section) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(section->storage));
}

// The addresses that the calling thread's frames may take, from low up to high.
struct StackRange {
  std::uintptr_t low = 0;
  std::uintptr_t high = 0;
};

// Of this thread; high is 0 until it is first asked for. At one offset from the thread's register.
[[gnu::tls_model("initial-exec")]] thread_local constinit StackRange t_stack;

[[gnu::noinline]] void FindStackRange() {
  StackRange& range = t_stack;
  range.high = 1;  // asked
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  if (pthread_attr_getstack(&attributes, &lowest, &size) == 0 && pthread_attr_getguardsize(&attributes, &guard) == 0) {
    // Whether the guard lies inside the range differs between the main thread and others: it is taken off both times.
    range.low = reinterpret_cast<std::uintptr_t>(lowest) + guard;
    range.high = reinterpret_cast<std::uintptr_t>(lowest) + size;
  }
  pthread_attr_destroy(&attributes);
}

}  // namespace

DWORD GetCurrentThreadId() {
  // A forked child's only thread has another number than the one it was copied from, so the process is compared.
  thread_local pid_t process = 0;
  thread_local DWORD id = 0;
  if (process != getpid()) {
    process = getpid();
    id = DWORD(gettid());
  }
  return id;
}

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

std::size_t StackBytesLeft() {
  if (t_stack.high == 0) FindStackRange();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > t_stack.low && here < t_stack.high ? here - t_stack.low : 0;
}
