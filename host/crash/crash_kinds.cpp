#include "host/crash/crash_kinds.h"

#include <xmmintrin.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include "platform/threads.h"

namespace kestrova {

namespace {

// The optimiser knows nothing of the value, so that it does not remove the fault.
template <class Value>
Value Hidden(Value value) {
  asm volatile("" : "+r"(value));
  return value;
}

constexpr std::uintptr_t kNearNull = 0x10;

// The sanitizer would end the program before the fault.
#define KV_NOT_SANITIZED __attribute__((no_sanitize("undefined")))

KV_NOT_SANITIZED void ReadNull() { Hidden(*Hidden(reinterpret_cast<volatile int*>(kNearNull))); }
KV_NOT_SANITIZED void WriteNull() { *Hidden(reinterpret_cast<volatile int*>(kNearNull)) = 1; }

KV_NOT_SANITIZED void RunData() {
  static unsigned char code[] = {0xC3, 0xC3, 0xC3, 0xC3};  // return
  reinterpret_cast<void (*)()>(Hidden(&code[0]))();
}

KV_NOT_SANITIZED void DivideByZero() { Hidden(Hidden(1) / Hidden(0)); }
KV_NOT_SANITIZED void Overflow() { Hidden(Hidden(std::numeric_limits<int>::min()) / Hidden(-1)); }

KV_NOT_SANITIZED void DivideFloat() {
  constexpr unsigned kZeroDivideMask = 1U << 9;
  _mm_setcsr(_mm_getcsr() & ~kZeroDivideMask);
  volatile float zero = 0;
  volatile float result = 1 / zero;
  static_cast<void>(result);
}

void RunIllegal() { asm volatile("ud2"); }
void RunPrivileged() { asm volatile("hlt"); }
void Break() { asm volatile("int3"); }

// With the processor's check of alignments.
void ReadMisaligned() {
  alignas(8) char bytes[16] = {};
  asm volatile(
      "pushfq\n\t"
      "orl $0x40000, (%%rsp)\n\t"
      "popfq\n\t"
      "movl 1(%0), %%eax"
      :
      : "r"(bytes)
      : "rax", "memory", "cc");
}

[[gnu::noinline]] int Recurse(int depth) {
  volatile char frame[1024];
  frame[0] = char(depth);
  return depth == Hidden(-1) ? 0 : Recurse(depth + 1) + frame[0];
}

void OverflowStack() { Hidden(Recurse(0)); }

void OverflowStackOfThread() {
  const HANDLE thread = CreateThread(
      nullptr, 0,
      [](void*) -> DWORD {
        OverflowStack();
        return 0;
      },
      nullptr, 0, nullptr);
  WaitForSingleObject(thread, INFINITE);
}

void Throw() { throw std::runtime_error("thrown on purpose"); }
void ThrowUncaught() noexcept { Hidden (&Throw)(); }

void FreeBadPointer() {
  static unsigned char no_block[64];
  std::free(Hidden(static_cast<void*>(no_block + 32)));
}

// Damages the list of free blocks. The next allocation fails within the heap, which holds its lock then.
void DamageHeap() {
  // The freed block has neighbours in use, so that it comes into the list by itself.
  std::uintptr_t** blocks[64] = {};
  for (auto*& block : blocks) block = static_cast<std::uintptr_t**>(Hidden(std::malloc(4000)));
  std::uintptr_t** const links = blocks[32];
  if (!links) return;
  std::free(Hidden(links));
  Hidden(links)[0] = Hidden(links)[1] = reinterpret_cast<std::uintptr_t*>(kNearNull);
  Hidden(std::malloc(60'000));
}

struct Kind {
  std::string_view name;
  void (*run)();
};
constexpr Kind kKinds[] = {
    {"read", ReadNull},
    {"write", WriteNull},
    {"execute", RunData},
    {"divide", DivideByZero},
    {"overflow", Overflow},
    {"float", DivideFloat},
    {"illegal", RunIllegal},
    {"privileged", RunPrivileged},
    {"breakpoint", Break},
    {"misaligned", ReadMisaligned},
    {"stack", OverflowStack},
    {"thread-stack", OverflowStackOfThread},
    {"abort", [] { std::abort(); }},
    {"exception", ThrowUncaught},
    {"free", FreeBadPointer},
    {"heap", DamageHeap},
};

}  // namespace

std::vector<std::string> CrashKinds() {
  std::vector<std::string> names;
  for (const Kind& kind : kKinds) names.emplace_back(kind.name);
  return names;
}

void BreakOnPurpose(std::string_view name) {
  for (const Kind& kind : kKinds)
    if (kind.name == name) kind.run();
}

}  // namespace kestrova
