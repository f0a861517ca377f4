// Structured exceptions through the system's vectored handlers: the compiler has no translators of its own.
#include "platform/exceptions.h"

#include <atomic>
#include <exception>

namespace {

struct BreakpointFilter {
  void (*routine)(EXCEPTION_POINTERS* pointers, void* data);
  void* data;
};

thread_local _se_translator_function t_translator = nullptr;
thread_local BreakpointFilter* t_filter = nullptr;
thread_local bool t_in_translator = false;

// Codes below are messages for a debugger, not faults.
constexpr DWORD kLowestFault = 0x80000002;
// The compiler's own C++ exceptions, which are usually caught.
constexpr DWORD kExceptionOfGcc = 0x20474343;

LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers) {
  const DWORD code = pointers->ExceptionRecord->ExceptionCode;
  if (t_filter && code == EXCEPTION_BREAKPOINT) {
    t_filter->routine(pointers, t_filter->data);
    return EXCEPTION_CONTINUE_EXECUTION;
  }
  if (!t_translator || t_in_translator || code < kLowestFault || code == kExceptionOfGcc)
    return EXCEPTION_CONTINUE_SEARCH;
  t_in_translator = true;
  t_translator(code, pointers);
  t_in_translator = false;
  return EXCEPTION_CONTINUE_SEARCH;
}

void InstallOnce() {
  static void* const handler = AddVectoredExceptionHandler(/*First=*/0, OnException);
  static_cast<void>(handler);
}

}  // namespace

_se_translator_function SetExceptionTranslator(_se_translator_function translator) {
  InstallOnce();
  const _se_translator_function former = t_translator;
  t_translator = translator;
  return former;
}

const char* UncaughtExceptionText() { return ""; }

bool CallAndSurvive(void (*routine)(void* data), void* data, DWORD) {
  try {
    routine(data);
    return true;
  } catch (...) {
    return false;
  }
}

void RaiseBreakpoint(void (*filter)(EXCEPTION_POINTERS* pointers, void* data), void* data) {
  InstallOnce();
  BreakpointFilter own = {filter, data};
  t_filter = &own;
  RaiseException(EXCEPTION_BREAKPOINT, 0, 0, nullptr);
  t_filter = nullptr;
}
