// The stacks of a dump's threads.
//
// Frames come from the modules' tables for unwinding where their files are found; where they are not, from the chain of
// frame pointers, which ends early in code that is compiled without one.
#pragma once

#include <string>
#include <vector>

#include "host/crash/minidump_reader.h"
#include "host/crash/symbols.h"

namespace kestrova {

struct StackFrame {
  std::uint64_t address = 0;           // of the instruction, or the return address
  const DumpModule* module = nullptr;  // of the dump; null if the address is in none
  SourceFrame source;
};

struct ThreadStack {
  const DumpThread* thread = nullptr;
  std::vector<StackFrame> frames;  // the innermost first; empty if the dump has no registers of the thread
  bool more = false;               // there are more frames than were asked for
};

// The stack of a thread, with most + 1 addresses at most; inlined functions are frames of their own.
ThreadStack StackOf(const Minidump& dump, const DumpBytes& bytes, const DumpThread& thread, std::size_t most,
                    Symbols& symbols);

}  // namespace kestrova
