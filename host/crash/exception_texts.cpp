#include "host/crash/exception_texts.h"

#include <fmt/format.h>

namespace kestrova {
namespace {

constexpr std::uint32_t kAccessViolation = 0xC0000005, kInPageError = 0xC0000006;

constexpr ExceptionText kTexts[] = {
    {0x40000015, "abort", "The program ended itself: a failed check, or a damaged heap that the C library has found."},
    {0x40010005, "Ctrl-C", "The user has ended the program; it is no fault."},
    {0x40010008, "Ctrl-Break", "The user has ended the program; it is no fault."},
    {0x80000002, "misaligned access", "The program used an address that its processor instruction does not allow."},
    {0x80000003, "breakpoint", "The program stopped itself: a failed check, or a dump that was asked for."},
    {0x80000004, "single step", "The processor stopped after an instruction, as a debugger asks it to."},
    {kAccessViolation, "access violation", "The program used memory that it does not have, or not for this access."},
    {kInPageError, "page that cannot be read",
     "A file that is mapped into memory got shorter, or its disk or network drive failed."},
    {0xC0000017, "out of memory", "The system had no more memory for the program."},
    {0xC000001D, "illegal instruction",
     "The processor does not know the instruction: the code is damaged, or it was built for a newer processor."},
    {0xC0000025, "exception that cannot be continued", "A handler continued after an exception that ends the program."},
    {0xC0000026, "invalid answer of a handler", "A handler of exceptions returned an invalid answer."},
    {0xC000008C, "index outside of an array", "The program used an index outside of an array."},
    {0xC000008D, "denormal number", "A calculation used a number that is too small, and the program traps these."},
    {0xC000008E, "division by zero", "A floating-point division by zero, which the program traps."},
    {0xC000008F, "inexact result", "A rounded floating-point result, which the program traps."},
    {0xC0000090, "invalid calculation",
     "A floating-point calculation without a result, such as 0/0, which the program traps."},
    {0xC0000091, "overflow", "A floating-point result is too large, and the program traps these."},
    {0xC0000092, "stack of the floating-point unit", "The stack of the floating-point unit ran over."},
    {0xC0000093, "underflow", "A floating-point result is too small, and the program traps these."},
    {0xC0000094, "integer division by zero", "The program divided an integer by zero."},
    {0xC0000095, "integer overflow", "The result of an integer division is too large."},
    {0xC0000096, "privileged instruction", "The program used an instruction that only the system may use."},
    {0xC00000FD, "stack overflow", "The calls are nested too deep, usually a recursion without an end."},
    {0xC0000142, "library that did not start", "A library failed when it was loaded."},
    {0xE06D7363, "uncaught C++ exception", "The program threw a C++ exception that nothing caught."},
};
constexpr ExceptionText kUnknown = {0, "unknown exception", "The code is none of the usual ones."};

}  // namespace

const ExceptionText& ExceptionTextOf(std::uint32_t code) {
  for (const ExceptionText& text : kTexts)
    if (text.code == code) return text;
  return kUnknown;
}

std::string AccessText(std::uint32_t code, std::span<const std::uint64_t> parameters) {
  constexpr std::uint64_t kWrite = 1, kExecute = 8;
  if ((code != kAccessViolation && code != kInPageError) || parameters.size() < 2) return {};
  const char* const access = parameters[0] == kWrite     ? "write to"
                             : parameters[0] == kExecute ? "execution of"
                                                         : "read from";
  return fmt::format("{} address {:#x}", access, parameters[1]);
}

std::string ExceptionLine(const DumpException& exception) {
  std::string line(ExceptionTextOf(exception.code).name);
  const std::string signal = exception.signal > 0 ? fmt::format("signal {}", exception.signal) : "";
  const std::string code = exception.code > 0 || signal.empty() ? fmt::format("0x{:08X}", exception.code) : "";
  line += fmt::format(" ({}{}{})", code, code.empty() || signal.empty() ? "" : ", ", signal);
  const std::string access = AccessText(exception.code, exception.parameters);
  return access.empty() ? line : line + ", " + access;
}

std::string_view AddressMeaning(std::uint64_t address) {
  constexpr std::uint64_t kNearNull = 0x10000, kNone = UINT64_MAX, kLowOfNone = UINT32_MAX;
  if (address < kNearNull) return "The address is near 0: the program used a pointer that was null.";
  if (address == kNone || address == kLowOfNone)
    return "The address is outside of the range that addresses have: the program used a damaged pointer.";
  return {};
}

}  // namespace kestrova
