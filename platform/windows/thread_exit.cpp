// A thread's calls are in a fibre-local slot, whose callback the system calls before it frees the thread's variables.
#include "platform/thread_exit.h"

#include <new>
#include <vector>

namespace {

using Calls = std::vector<void (*)()>;

thread_local Calls* t_running = nullptr;  // while they are called; the slot is empty then

void WINAPI CallAll(void* slot) {
  auto* const calls = t_running = static_cast<Calls*>(slot);
  while (!calls->empty()) {
    const auto call = calls->back();
    calls->pop_back();
    call();
  }
  t_running = nullptr;
  delete calls;
}

}  // namespace

void AtThreadExit(void (*call)()) {
  static const DWORD slot = FlsAlloc(CallAll);
  if (slot == FLS_OUT_OF_INDEXES) throw std::bad_alloc();
  auto* calls = t_running ? t_running : static_cast<Calls*>(FlsGetValue(slot));
  if (!calls) FlsSetValue(slot, calls = new Calls);
  calls->push_back(call);
}
