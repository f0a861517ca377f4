// Structured exceptions from signals: installs the handlers, calls the translator, and passes the signal on.
#include "platform/exceptions.h"

#include <cxxabi.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <mutex>

#include "platform/linux/fault.h"
#include "platform/linux/signal_stack.h"

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT};

struct Handlers {
  std::mutex lock;
  int users = 0;  // threads with a translator
  struct sigaction former[std::size(kSignals)] = {};
  std::terminate_handler former_terminate = nullptr;
};
// Never destroyed: a fault can come after static objects are gone.
Handlers& TheHandlers() {
  static auto* handlers = new Handlers;
  return *handlers;
}

// What the handler reads: numbers and pointers only.
constinit Handlers* g_handlers = nullptr;
constinit std::atomic<_se_translator_function> g_last_translator = nullptr;
constinit std::atomic<pid_t> g_owner = 0;     // the thread whose fault is being handled
constinit std::atomic<pid_t> g_uncaught = 0;  // the thread that an uncaught exception ends
constinit char g_uncaught_text[1024] = {};

struct BreakpointFilter {
  void (*routine)(EXCEPTION_POINTERS* pointers, void* data);
  void* data;
};

KV_FAST_THREAD_LOCAL constinit _se_translator_function t_translator = nullptr;
KV_FAST_THREAD_LOCAL constinit sigjmp_buf* t_way_out = nullptr;  // of the innermost CallAndSurvive
KV_FAST_THREAD_LOCAL constinit BreakpointFilter* t_filter = nullptr;
// The instruction whose fault a former handler has returned from, so that the fault comes again.
KV_FAST_THREAD_LOCAL constinit ULONGLONG t_returned_to = 0;

std::size_t IndexOf(int signal) {
  for (std::size_t at = 0; at < std::size(kSignals); ++at)
    if (kSignals[at] == signal) return at;
  return 0;
}

void Unblock(int signal) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

// One fault at a time: the second thread waits, and ends with the process unless the first one is survived.
void TakeTurn() {
  pid_t nobody = 0;
  const timespec pause = {0, 1'000'000};
  while (!g_owner.compare_exchange_weak(nobody, gettid())) {
    nobody = 0;
    nanosleep(&pause, nullptr);
  }
}

void EndTurn() {
  pid_t own = gettid();
  g_owner.compare_exchange_strong(own, 0);
}

// ---- passing the signal on

// The default action comes as without this library: a fault by running the instruction again, any other signal by
// sending it again, to be delivered when the handler has returned.
void UseDefaultAction(int signal, siginfo_t* info) {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  sigaction(signal, &standard, nullptr);
  if (info->si_code > 0 && signal != SIGTRAP) return;
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), signal, info);
}

void PassOn(int signal, siginfo_t* info, void* ucontext, ULONGLONG instruction) {
  const struct sigaction former = g_handlers->former[IndexOf(signal)];
  const bool is_ignored = !(former.sa_flags & SA_SIGINFO) && former.sa_handler == SIG_IGN && info->si_code <= 0;
  if (is_ignored) return EndTurn();
  if (!(former.sa_flags & SA_SIGINFO) && (former.sa_handler == SIG_DFL || former.sa_handler == SIG_IGN))
    return UseDefaultAction(signal, info);
  if (former.sa_flags & int(SA_RESETHAND)) g_handlers->former[IndexOf(signal)] = {};
  sigset_t mask = former.sa_mask;
  if (!(former.sa_flags & SA_NODEFER)) sigaddset(&mask, signal);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &mask, &before);
  t_returned_to = 0;
  EndTurn();  // not before the default action: another thread's turn could begin before the process ends
  if (former.sa_flags & SA_SIGINFO) {
    former.sa_sigaction(signal, info, ucontext);
  } else {
    former.sa_handler(signal);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  t_returned_to = instruction;
}

// ---- the handler

struct Translation {
  _se_translator_function translator;
  EXCEPTION_POINTERS pointers;
};

void CallTranslator(void* data) {
  auto& translation = *static_cast<Translation*>(data);
  translation.translator(translation.pointers.ExceptionRecord->ExceptionCode, &translation.pointers);
}

// The system leaves the processor's check of alignments as it was, and most code here breaks its rule.
[[gnu::always_inline]] inline void AllowMisalignedAccess() {
  asm volatile(
      "leaq -128(%%rsp), %%rsp\n\t"  // below what the compiler may use without a push
      "pushfq\n\t"
      "andl $~0x40000, (%%rsp)\n\t"
      "popfq\n\t"
      "leaq 128(%%rsp), %%rsp"
      :
      :
      : "memory", "cc");
}

void Handle(int signal, siginfo_t* info, void* ucontext) {
  if (t_way_out && !(t_filter && signal == SIGTRAP)) siglongjmp(*t_way_out, 1);  // a fault in a callback
  const int error = errno;
  Fault fault;
  DescribeFault(*info, ucontext, g_uncaught == gettid(), fault);
  Translation translation = {t_translator ? t_translator : g_last_translator.load(), {&fault.record, &fault.context}};
  if (t_filter && signal == SIGTRAP) {
    t_filter->routine(&translation.pointers, t_filter->data);
    errno = error;
    return;
  }
  if (translation.translator && t_returned_to != fault.context.Rip && g_owner != gettid()) {
    TakeTurn();
    CallAndSurvive(CallTranslator, &translation, /*limit_ms=*/0);
  }
  errno = error;
  PassOn(signal, info, ucontext, fault.context.Rip);
}

void OnSignal(int signal, siginfo_t* info, void* ucontext) {
  AllowMisalignedAccess();
  Handle(signal, info, ucontext);
}

// ---- uncaught exceptions

void DescribeUncaughtException() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (!type) return;
  int status = 0;
  char* const name = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
  const char* const shown = name ? name : type->name();
  try {
    throw;
  } catch (const std::exception& exception) {
    std::snprintf(g_uncaught_text, sizeof g_uncaught_text, "%s: %s", shown, exception.what());
  } catch (const char* text) {
    std::snprintf(g_uncaught_text, sizeof g_uncaught_text, "%s: %s", shown, text ? text : "");
  } catch (...) {
    std::snprintf(g_uncaught_text, sizeof g_uncaught_text, "%s", shown);
  }
  std::free(name);
}

[[noreturn]] void OnTerminate() {
  pid_t nobody = 0;
  if (std::current_exception() && g_uncaught.compare_exchange_strong(nobody, gettid())) DescribeUncaughtException();
  if (const std::terminate_handler former = TheHandlers().former_terminate) former();
  std::abort();
}

// ---- installing

// Under the lock of the handlers.
void Install(Handlers& handlers) {
  g_handlers = &handlers;
  struct sigaction own = {};
  own.sa_sigaction = OnSignal;
  own.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  for (std::size_t at = 0; at < std::size(kSignals); ++at) sigaction(kSignals[at], &own, &handlers.former[at]);
  handlers.former_terminate = std::set_terminate(OnTerminate);
}

// A handler that the host has installed later stays.
void Remove(Handlers& handlers) {
  for (std::size_t at = 0; at < std::size(kSignals); ++at) {
    struct sigaction present = {};
    sigaction(kSignals[at], nullptr, &present);
    if (present.sa_flags & SA_SIGINFO && present.sa_sigaction == OnSignal)
      sigaction(kSignals[at], &handlers.former[at], nullptr);
  }
  if (std::get_terminate() == OnTerminate) std::set_terminate(handlers.former_terminate);
}

// ---- the time limit of a routine

// The signal of the timer; its value is the address of g_owner, so that no other timer is taken for this one.
const int kTimeUp = SIGRTMAX - 1;

void OnTimeUp(int, siginfo_t* info, void*) {
  if (info->si_code == SI_TIMER && info->si_value.sival_ptr == &g_owner && t_way_out) siglongjmp(*t_way_out, 2);
}

class TimeLimit {
 public:
  explicit TimeLimit(DWORD milliseconds) {
    if (milliseconds == 0) return;
    struct sigaction own = {};
    own.sa_sigaction = OnTimeUp;
    own.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(kTimeUp, &own, &former_);
    Unblock(kTimeUp);
    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = kTimeUp;
    event.sigev_value.sival_ptr = &g_owner;
    event._sigev_un._tid = gettid();
    // The C library's own function may allocate.
    has_timer_ = syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &timer_) == 0;
    const itimerspec limit = {{}, {time_t(milliseconds / 1000), long(milliseconds % 1000) * 1'000'000}};
    if (has_timer_) syscall(SYS_timer_settime, timer_, 0, &limit, nullptr);
    is_set_ = true;
  }
  ~TimeLimit() {
    if (has_timer_) syscall(SYS_timer_delete, timer_);
    if (is_set_) sigaction(kTimeUp, &former_, nullptr);
  }
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;

 private:
  struct sigaction former_ = {};
  int timer_ = 0;
  bool has_timer_ = false;
  bool is_set_ = false;
};

}  // namespace

_se_translator_function SetExceptionTranslator(_se_translator_function translator) {
  const _se_translator_function former = t_translator;
  if (translator) UseSignalStack();
  Handlers& handlers = TheHandlers();
  const std::lock_guard guard(handlers.lock);
  if (translator && !former && handlers.users++ == 0) Install(handlers);
  t_translator = translator;
  if (translator) g_last_translator = translator;
  if (!translator && former && --handlers.users == 0) {
    Remove(handlers);
    g_last_translator = nullptr;
  }
  return former;
}

const char* UncaughtExceptionText() { return g_uncaught_text; }

bool CallAndSurvive(void (*routine)(void* data), void* data, DWORD limit_ms) {
  sigjmp_buf here;
  sigjmp_buf* const outer = t_way_out;
  const TimeLimit limit(limit_ms);
  volatile bool is_done = false;
  if (sigsetjmp(here, /*savemask=*/1) == 0) {
    t_way_out = &here;
    try {
      routine(data);
      is_done = true;
    } catch (...) {  // the routine has failed
    }
  }
  t_way_out = outer;
  return is_done;
}

void RaiseBreakpoint(void (*filter)(EXCEPTION_POINTERS* pointers, void* data), void* data) {
  Handlers& handlers = TheHandlers();
  BreakpointFilter own = {filter, data};
  struct sigaction present = {};
  {
    const std::lock_guard guard(handlers.lock);
    struct sigaction action = {};
    action.sa_sigaction = OnSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigaction(SIGTRAP, &action, &present);
    Unblock(SIGTRAP);
    t_filter = &own;
    syscall(SYS_tgkill, getpid(), gettid(), SIGTRAP);
    t_filter = nullptr;
    sigaction(SIGTRAP, &present, nullptr);
  }
}
