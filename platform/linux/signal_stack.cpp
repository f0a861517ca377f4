#include "platform/linux/signal_stack.h"

#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "platform/types.h"

namespace {

// Callbacks of the host run on it.
constexpr std::size_t kStackBytes = 512 * 1024;
constexpr std::size_t kGuardBytes = 64 * 1024;
// The main thread has no guard area of its own.
constexpr std::uintptr_t kSmallestGuard = 64 * 1024;

KV_FAST_THREAD_LOCAL constinit StackLimits t_limits;
constinit std::atomic<bool> g_is_used = false;

void FindLimits() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  if (pthread_attr_getstack(&attributes, &lowest, &size) == 0 && pthread_attr_getguardsize(&attributes, &guard) == 0)
    t_limits = {reinterpret_cast<std::uintptr_t>(lowest), std::max(kSmallestGuard, std::uintptr_t(guard))};
  pthread_attr_destroy(&attributes);
}

// The stack of one thread. At the thread's end the earlier one is in force again, whose owner may remove it then.
class SignalStack {
 public:
  SignalStack() {
    stack_t former = {};
    sigaltstack(nullptr, &former);
    if (!(former.ss_flags & SS_DISABLE) && former.ss_size >= kStackBytes) return;
    void* const memory = mmap(nullptr, kGuardBytes + kStackBytes, PROT_NONE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) return;
    stack_t own = {};
    own.ss_sp = static_cast<char*>(memory) + kGuardBytes;
    own.ss_size = kStackBytes;
    if (mprotect(own.ss_sp, kStackBytes, PROT_READ | PROT_WRITE) != 0 || sigaltstack(&own, &former_) != 0) {
      munmap(memory, kGuardBytes + kStackBytes);
      return;
    }
    memory_ = memory;
  }
  ~SignalStack() {
    if (!memory_) return;
    sigaltstack(&former_, nullptr);
    munmap(memory_, kGuardBytes + kStackBytes);
  }
  SignalStack(const SignalStack&) = delete;
  SignalStack& operator=(const SignalStack&) = delete;

 private:
  stack_t former_ = {};
  void* memory_ = nullptr;
};

}  // namespace

void UseSignalStack() {
  g_is_used = true;
  if (t_limits.low != 0) return;
  FindLimits();
  thread_local const SignalStack stack;
}

void UseSignalStackLikeOthers() {
  if (g_is_used) UseSignalStack();
}

StackLimits LimitsOfStack() { return t_limits; }
