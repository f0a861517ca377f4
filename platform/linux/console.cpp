#include "platform/console.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <mutex>

#include "platform/linux/errno_status.h"
#include "platform/linux/utf8.h"

namespace {

// In the order of adding, followed by null entries. The signal handler reads it.
constinit std::array<std::atomic<PHANDLER_ROUTINE>, 4> g_routines = {};
static_assert(std::atomic<PHANDLER_ROUTINE>::is_always_lock_free);
constinit std::mutex g_routinesLock;

void OnInterrupt(int number) {
  for (std::size_t at = g_routines.size(); at-- > 0;) {
    const PHANDLER_ROUTINE routine = g_routines[at];
    if (routine && routine(CTRL_C_EVENT)) return;
  }
  std::signal(number, SIG_DFL);
  raise(number);
}

}  // namespace

int _isatty(int stream) { return isatty(stream); }

BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE routine, BOOL add) {
  const std::lock_guard guard(g_routinesLock);
  const PHANDLER_ROUTINE wanted = add ? nullptr : routine;
  std::size_t at = 0;
  while (at < g_routines.size() && g_routines[at] != wanted) ++at;
  if (!routine || at == g_routines.size()) return FailWithStatus(ERROR_INVALID_PARAMETER);
  for (; !add && at + 1 < g_routines.size(); ++at) g_routines[at] = g_routines[at + 1].load();
  g_routines[at] = add ? routine : nullptr;
  struct sigaction action = {};
  action.sa_handler = g_routines[0].load() ? OnInterrupt : SIG_DFL;
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  return TRUE;
}

void OutputDebugStringW(LPCWSTR text) { std::fputs(Utf8FromWide(text).c_str(), stderr); }

std::vector<std::string> Utf8Arguments(int argc, char** argv) { return {argv, argv + argc}; }

void UseUtf8Streams() {}
