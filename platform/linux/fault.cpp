#include "platform/linux/fault.h"

#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "platform/linux/signal_stack.h"

namespace {

// si_code 0 stands for every other cause of the signal; it is the last row of its signal.
struct Cause {
  int signal;
  int code;
  DWORD exception;
};
constexpr Cause kCauses[] = {
    {SIGSEGV, 0, EXCEPTION_ACCESS_VIOLATION},
    {SIGBUS, BUS_ADRALN, EXCEPTION_DATATYPE_MISALIGNMENT},
    {SIGBUS, 0, EXCEPTION_IN_PAGE_ERROR},
    {SIGFPE, FPE_INTDIV, EXCEPTION_INT_DIVIDE_BY_ZERO},
    {SIGFPE, FPE_INTOVF, EXCEPTION_INT_OVERFLOW},
    {SIGFPE, FPE_FLTDIV, EXCEPTION_FLT_DIVIDE_BY_ZERO},
    {SIGFPE, FPE_FLTOVF, EXCEPTION_FLT_OVERFLOW},
    {SIGFPE, FPE_FLTUND, EXCEPTION_FLT_UNDERFLOW},
    {SIGFPE, FPE_FLTRES, EXCEPTION_FLT_INEXACT_RESULT},
    {SIGFPE, FPE_FLTSUB, EXCEPTION_ARRAY_BOUNDS_EXCEEDED},
    {SIGFPE, 0, EXCEPTION_FLT_INVALID_OPERATION},
    {SIGILL, ILL_PRVOPC, EXCEPTION_PRIV_INSTRUCTION},
    {SIGILL, 0, EXCEPTION_ILLEGAL_INSTRUCTION},
    {SIGTRAP, TRAP_TRACE, EXCEPTION_SINGLE_STEP},
    {SIGTRAP, 0, EXCEPTION_BREAKPOINT},
    {SIGABRT, 0, EXCEPTION_OF_ABORT},
};

DWORD CodeOf(const siginfo_t& info) {
  for (const Cause& cause : kCauses)
    if (cause.signal == info.si_signo && (cause.code == info.si_code || cause.code == 0)) return cause.exception;
  return 0;
}

// ---- registers

void CopyRegisters(const ucontext_t& from, CONTEXT& to) {
  const greg_t* const r = from.uc_mcontext.gregs;
  to.ContextFlags = CONTEXT_ALL_REGISTERS;
  const std::uint64_t segments = std::uint64_t(r[REG_CSGSFS]);
  to.SegCs = WORD(segments);
  to.SegGs = WORD(segments >> 16);
  to.SegFs = WORD(segments >> 32);
  to.SegSs = WORD(segments >> 48);
  to.EFlags = DWORD(r[REG_EFL]);
  const struct {
    ULONGLONG CONTEXT::*field;
    int number;
  } kRegisters[] = {{&CONTEXT::Rax, REG_RAX}, {&CONTEXT::Rcx, REG_RCX}, {&CONTEXT::Rdx, REG_RDX},
                    {&CONTEXT::Rbx, REG_RBX}, {&CONTEXT::Rsp, REG_RSP}, {&CONTEXT::Rbp, REG_RBP},
                    {&CONTEXT::Rsi, REG_RSI}, {&CONTEXT::Rdi, REG_RDI}, {&CONTEXT::R8, REG_R8},
                    {&CONTEXT::R9, REG_R9},   {&CONTEXT::R10, REG_R10}, {&CONTEXT::R11, REG_R11},
                    {&CONTEXT::R12, REG_R12}, {&CONTEXT::R13, REG_R13}, {&CONTEXT::R14, REG_R14},
                    {&CONTEXT::R15, REG_R15}, {&CONTEXT::Rip, REG_RIP}};
  for (const auto& [field, number] : kRegisters) to.*field = ULONGLONG(r[number]);
  if (!from.uc_mcontext.fpregs) return;
  std::memcpy(to.FltSave, from.uc_mcontext.fpregs, sizeof to.FltSave);
  to.MxCsr = from.uc_mcontext.fpregs->mxcsr;
}

// ---- causes that the signal does not tell apart

// The register of a number in an instruction's operand.
ULONGLONG RegisterOf(const CONTEXT& context, unsigned number) {
  static constexpr ULONGLONG CONTEXT::*kInOrder[16] = {&CONTEXT::Rax, &CONTEXT::Rcx, &CONTEXT::Rdx, &CONTEXT::Rbx,
                                                       &CONTEXT::Rsp, &CONTEXT::Rbp, &CONTEXT::Rsi, &CONTEXT::Rdi,
                                                       &CONTEXT::R8,  &CONTEXT::R9,  &CONTEXT::R10, &CONTEXT::R11,
                                                       &CONTEXT::R12, &CONTEXT::R13, &CONTEXT::R14, &CONTEXT::R15};
  return context.*kInOrder[number & 15];
}

std::int32_t Displacement(const BYTE* at, unsigned bytes) {
  if (bytes == 1) return std::int8_t(*at);
  std::int32_t value = 0;
  std::memcpy(&value, at, bytes);
  return value;
}

constexpr std::size_t kLongestInstruction = 15;

// The address of the memory operand that code[at] describes; the instruction ends with it.
ULONGLONG OperandAddress(const CONTEXT& context, const BYTE* code, std::size_t at, unsigned rex) {
  const unsigned mode = code[at] >> 6;
  unsigned base = code[at] & 7;
  ++at;
  ULONGLONG address = 0;
  bool has_base = true;
  if (base == 4) {  // base and index in a byte of their own
    const unsigned index = (code[at] >> 3 & 7) | (rex & 2) << 2;
    if (index != 4) address = RegisterOf(context, index) << (code[at] >> 6);
    base = code[at] & 7;
    ++at;
    has_base = base != 5 || mode != 0;
  } else if (base == 5 && mode == 0) {  // relative to the next instruction
    return context.Rip + at + 4 + ULONGLONG(Displacement(code + at, 4));
  }
  if (has_base) address += RegisterOf(context, base | (rex & 1) << 3);
  return address + ULONGLONG(Displacement(code + at, mode == 1 ? 1 : mode == 2 || !has_base ? 4 : 0));
}

// The processor reports a quotient that is too large as a division by zero: the divisor decides.
bool IsDivisorZero(const CONTEXT& context) {
  BYTE code[2 * kLongestInstruction] = {};
  if (ReadOwnMemory(context.Rip, code, sizeof code) == 0) return true;
  std::size_t at = 0;
  bool is_short = false;
  for (; code[at] == 0x66 || code[at] == 0x67 || (code[at] & 0xE7) == 0x26; ++at) {
    is_short |= code[at] == 0x66;
    if (at == kLongestInstruction) return true;
  }
  const unsigned rex = (code[at] & 0xF0) == 0x40 ? code[at++] : 0;
  if ((code[at] & 0xFE) != 0xF6) return true;  // no division
  const std::size_t bytes = code[at] == 0xF6 ? 1 : rex & 8 ? 8 : is_short ? 2 : 4;
  ++at;
  ULONGLONG divisor = 0;
  if (code[at] >> 6 == 3) {
    unsigned number = (code[at] & 7) | (rex & 1) << 3;
    const bool is_high_byte = bytes == 1 && rex == 0 && number >= 4;  // ah, ch, dh, bh
    if (is_high_byte) number -= 4;
    divisor = RegisterOf(context, number) >> (is_high_byte ? 8 : 0);
  } else if (ReadOwnMemory(OperandAddress(context, code, at, rex), &divisor, bytes) < bytes) {
    return true;
  }
  return bytes < 8 ? (divisor & ((1ULL << 8 * bytes) - 1)) == 0 : divisor == 0;
}

// Whether the instruction is one that only the system may run; the processor reports these without an address.
bool IsPrivileged(const CONTEXT& context) {
  BYTE code[2] = {};
  if (ReadOwnMemory(context.Rip, code, sizeof code) == 0) return false;
  constexpr BYTE kSingle[] = {0xE4, 0xE5, 0xE6, 0xE7, 0xEC, 0xED, 0xEE, 0xEF, 0xF4, 0xFA, 0xFB};
  constexpr BYTE kAfter0F[] = {0x00, 0x01, 0x06, 0x08, 0x09, 0x20, 0x22, 0x30, 0x32};
  const auto contains = [](const auto& list, BYTE byte) {
    return std::find(std::begin(list), std::end(list), byte) != std::end(list);
  };
  return code[0] == 0x0F ? contains(kAfter0F, code[1]) : contains(kSingle, code[0]);
}

// Whether the fault is in the area below the stack. The limits of a thread without a signal stack are unknown; its
// handler runs only if the stack has room left, so it did not overflow.
bool IsStackOverflow(std::uintptr_t address) {
  const StackLimits limits = LimitsOfStack();
  return limits.low != 0 && address >= limits.low - limits.guard && address < limits.low + limits.guard;
}

constexpr DWORD_PTR kErrorWrite = 2;
constexpr DWORD_PTR kErrorExecute = 16;

void DescribeMemoryFault(const siginfo_t& info, const ucontext_t& from, Fault& fault) {
  const bool has_address = info.si_code > 0 && info.si_code != SI_KERNEL;
  const auto address = has_address ? reinterpret_cast<std::uintptr_t>(info.si_addr) : ~std::uintptr_t(0);
  const auto error = has_address ? DWORD_PTR(from.uc_mcontext.gregs[REG_ERR]) : 0;
  EXCEPTION_RECORD& record = fault.record;
  if (info.si_signo == SIGSEGV && has_address && IsStackOverflow(address))
    record.ExceptionCode = EXCEPTION_STACK_OVERFLOW;
  if (info.si_code == SI_KERNEL && IsPrivileged(fault.context)) {
    record.ExceptionCode = EXCEPTION_PRIV_INSTRUCTION;
    return;
  }
  record.NumberParameters = 2;
  record.ExceptionInformation[0] = error & kErrorExecute ? 8 : error & kErrorWrite ? 1 : 0;
  record.ExceptionInformation[1] = address;
}

}  // namespace

std::size_t ReadOwnMemory(std::uintptr_t address, void* target, std::size_t bytes) {
  const iovec to = {target, bytes};
  const iovec from = {reinterpret_cast<void*>(address), bytes};
  const ssize_t count = process_vm_readv(getpid(), &to, 1, &from, 1, 0);
  if (count > 0) return std::size_t(count);
  // The call copies nothing of a range that ends in memory that can't be read.
  const std::size_t first = std::min<std::size_t>(bytes, 4096 - address % 4096);
  if (first == bytes) return 0;
  const iovec part = {reinterpret_cast<void*>(address), first};
  const ssize_t copied = process_vm_readv(getpid(), &to, 1, &part, 1, 0);
  return copied > 0 ? std::size_t(copied) : 0;
}

void DescribeFault(const siginfo_t& info, const void* ucontext, bool uncaught, Fault& fault) {
  const auto& from = *static_cast<const ucontext_t*>(ucontext);
  fault = {};
  CopyRegisters(from, fault.context);
  EXCEPTION_RECORD& record = fault.record;
  record.ExceptionCode = CodeOf(info);
  record.ExceptionAddress = reinterpret_cast<void*>(fault.context.Rip);
  if (info.si_signo == SIGTRAP && info.si_code == SI_KERNEL) {  // the instruction int3 is one byte before
    --fault.context.Rip;
    record.ExceptionAddress = reinterpret_cast<void*>(fault.context.Rip);
  } else if (info.si_signo == SIGSEGV || info.si_signo == SIGBUS) {
    DescribeMemoryFault(info, from, fault);
  } else if (record.ExceptionCode == EXCEPTION_INT_DIVIDE_BY_ZERO && !IsDivisorZero(fault.context)) {
    record.ExceptionCode = EXCEPTION_INT_OVERFLOW;
  } else if (info.si_signo == SIGABRT && uncaught) {
    record.ExceptionCode = EXCEPTION_OF_CPP;
  }
}

int SignalOfException(DWORD code) {
  if (code == EXCEPTION_STACK_OVERFLOW || code == EXCEPTION_PRIV_INSTRUCTION) return SIGSEGV;
  if (code == EXCEPTION_OF_CPP) return SIGABRT;
  for (const Cause& cause : kCauses)
    if (cause.exception == code) return cause.signal;
  return 0;
}
