// Translates a signal into the platform's exception: code, parameters and registers. Internal to platform/linux.
#pragma once

#include <signal.h>

#include "platform/exceptions.h"

struct Fault {
  EXCEPTION_RECORD record;
  CONTEXT context;
};

// Callable in a handler: no allocation, no lock. `uncaught` says that an uncaught C++ exception caused a SIGABRT.
void DescribeFault(const siginfo_t& info, const void* ucontext, bool uncaught, Fault& fault);

// The signal of a code of DescribeFault; 0 for another code.
int SignalOfException(DWORD code);

// Copies bytes of this process's memory as far as they can be read, and returns their number. Never faults.
std::size_t ReadOwnMemory(std::uintptr_t address, void* target, std::size_t bytes);
