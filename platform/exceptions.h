// Structured exceptions: the registers and the cause of a fault, and the function that sees it first.
//
// On Linux a fault is a signal: SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP or SIGABRT, also the one of an uncaught C++
// exception. The translator runs in the signal's handler, on a stack of its own, so it must not allocate, lock or use
// the C library's formats. Afterwards the handler that was installed before this library's gets the signal, or the
// system's default action: the core file and the status are the same as without this library.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <dbghelp.h>

#include <typeinfo>

#include <eh.h>

#else

// ---- the cause and the registers

inline constexpr DWORD EXCEPTION_MAXIMUM_PARAMETERS = 15;

inline constexpr DWORD EXCEPTION_DATATYPE_MISALIGNMENT = 0x80000002;
inline constexpr DWORD EXCEPTION_BREAKPOINT = 0x80000003;
inline constexpr DWORD EXCEPTION_SINGLE_STEP = 0x80000004;
inline constexpr DWORD EXCEPTION_ACCESS_VIOLATION = 0xC0000005;
inline constexpr DWORD EXCEPTION_IN_PAGE_ERROR = 0xC0000006;
inline constexpr DWORD EXCEPTION_ILLEGAL_INSTRUCTION = 0xC000001D;
inline constexpr DWORD EXCEPTION_ARRAY_BOUNDS_EXCEEDED = 0xC000008C;
inline constexpr DWORD EXCEPTION_FLT_DIVIDE_BY_ZERO = 0xC000008E;
inline constexpr DWORD EXCEPTION_FLT_INEXACT_RESULT = 0xC000008F;
inline constexpr DWORD EXCEPTION_FLT_INVALID_OPERATION = 0xC0000090;
inline constexpr DWORD EXCEPTION_FLT_OVERFLOW = 0xC0000091;
inline constexpr DWORD EXCEPTION_FLT_UNDERFLOW = 0xC0000093;
inline constexpr DWORD EXCEPTION_INT_DIVIDE_BY_ZERO = 0xC0000094;
inline constexpr DWORD EXCEPTION_INT_OVERFLOW = 0xC0000095;
inline constexpr DWORD EXCEPTION_PRIV_INSTRUCTION = 0xC0000096;
inline constexpr DWORD EXCEPTION_STACK_OVERFLOW = 0xC00000FD;

// For an access violation the parameters are the kind of access (0 read, 1 write, 8 execute) and the address.
struct EXCEPTION_RECORD {
  DWORD ExceptionCode;
  DWORD ExceptionFlags;
  EXCEPTION_RECORD* ExceptionRecord;  // null
  void* ExceptionAddress;             // of the instruction
  DWORD NumberParameters;
  DWORD_PTR ExceptionInformation[EXCEPTION_MAXIMUM_PARAMETERS];
};

inline constexpr DWORD CONTEXT_ALL_REGISTERS = 0x10000F;

// The registers of a 64-bit x86 thread, in the layout that dump files have.
struct alignas(16) CONTEXT {
  ULONGLONG P1Home, P2Home, P3Home, P4Home, P5Home, P6Home;
  DWORD ContextFlags;
  DWORD MxCsr;
  WORD SegCs, SegDs, SegEs, SegFs, SegGs, SegSs;
  DWORD EFlags;
  ULONGLONG Dr0, Dr1, Dr2, Dr3, Dr6, Dr7;
  ULONGLONG Rax, Rcx, Rdx, Rbx, Rsp, Rbp, Rsi, Rdi, R8, R9, R10, R11, R12, R13, R14, R15;
  ULONGLONG Rip;
  BYTE FltSave[512];  // as the instruction FXSAVE stores it
  BYTE VectorRegister[26][16];
  ULONGLONG VectorControl;
  ULONGLONG DebugControl, LastBranchToRip, LastBranchFromRip, LastExceptionToRip, LastExceptionFromRip;
};
static_assert(sizeof(CONTEXT) == 1232);

struct EXCEPTION_POINTERS {
  EXCEPTION_RECORD* ExceptionRecord;
  CONTEXT* ContextRecord;
};

// What a dump has beside threads and stacks: bits. Others have no effect on this system.
enum _MINIDUMP_TYPE : int {
  MiniDumpNormal = 0,
  MiniDumpWithDataSegs = 0x1,
  MiniDumpWithFullMemory = 0x2,
  MiniDumpWithPrivateReadWriteMemory = 0x200,
  MiniDumpWithFullMemoryInfo = 0x800,
  MiniDumpWithCodeSegs = 0x2000,
};
using MINIDUMP_TYPE = _MINIDUMP_TYPE;

// ---- the translator

using _se_translator_function = void (*)(unsigned code, EXCEPTION_POINTERS* pointers);

#endif

// As _set_se_translator, which not every compiler's runtime has: sets the calling thread's translator and returns the
// former one; null: none. On Linux, while a thread has one, the signals are caught in the whole process: a thread that
// never set its own has the one that was set last. The calling thread, and threads that CreateThread starts afterwards,
// get a stack for the handler, so that an overflow of theirs is seen too.
KVSHARE_API _se_translator_function SetExceptionTranslator(_se_translator_function translator);

inline constexpr DWORD EXCEPTION_OF_CPP = 0xE06D7363;    // an uncaught C++ exception
inline constexpr DWORD EXCEPTION_OF_ABORT = 0x40000015;  // abort

// The type and text of the C++ exception that ends the process; empty if there is none. Valid for ever.
KVSHARE_API const char* UncaughtExceptionText();

// Calls a routine that may fail: a fault, a C++ exception, or on Linux more time than the limit, ends it. Returns
// whether it came to its end. A routine that was ended leaves its locks and memory as they are, so that the process
// should end soon. For translators.
KVSHARE_API bool CallAndSurvive(void (*routine)(void* data), void* data, DWORD limit_ms);

// Raises the breakpoint exception on the calling thread, passes its pointers to the filter and goes on afterwards. For
// the registers of a thread that has no fault.
KVSHARE_API void RaiseBreakpoint(void (*filter)(EXCEPTION_POINTERS* pointers, void* data), void* data);
