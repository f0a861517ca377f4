#include "host/crash/stack_walk.h"

namespace kestrova {
namespace {

using Addresses = std::vector<StackAddress>;

// The instruction, and the return addresses that the chain of frame pointers leads to. The chain goes up the stack, so
// a damaged one cannot turn in a circle.
Addresses ByFramePointers(const Minidump& dump, const DumpBytes& bytes, const DumpRegisters& registers,
                          std::size_t most) {
  Addresses addresses = {{registers.rip, false}};
  std::uint64_t frame = registers.general[DumpRegisters::kRbp];
  std::uint64_t stack = registers.general[DumpRegisters::kRsp];
  while (addresses.size() < most && frame >= stack && frame <= UINT64_MAX - 16) {
    const auto next = dump.WordAt(bytes, frame), address = dump.WordAt(bytes, frame + 8);
    if (!next || !address || !dump.ModuleAt(*address - 1)) break;
    addresses.push_back({*address, true});
    stack = frame + 16;
    frame = *next;
  }
  return addresses;
}

Addresses Walk(const Minidump& dump, const DumpBytes& bytes, const DumpRegisters& registers, std::size_t most,
               Symbols& symbols) {
  Addresses found = symbols.Unwind(registers, most);
  if (found.size() > 1) return found;
  Addresses chain = ByFramePointers(dump, bytes, registers, most);
  return chain.size() > found.size() ? chain : found;
}

// After a call of a wrong address, such as null or data, the caller's address is on top of the stack.
bool StepOutOfWrongCall(const Minidump& dump, const DumpBytes& bytes, DumpRegisters& registers) {
  std::uint64_t& stack = registers.general[DumpRegisters::kRsp];
  const auto caller = dump.WordAt(bytes, stack);
  if (!caller || !dump.ModuleAt(*caller - 1)) return false;
  registers.rip = *caller;
  stack += 8;
  return true;
}

Addresses AddressesOf(const Minidump& dump, const DumpBytes& bytes, DumpRegisters registers, std::size_t most,
                      Symbols& symbols) {
  Addresses addresses = {{registers.rip, false}};
  if (!dump.ModuleAt(registers.rip)) {
    if (!StepOutOfWrongCall(dump, bytes, registers)) return Walk(dump, bytes, registers, most, symbols);
  } else {
    Addresses found = Walk(dump, bytes, registers, most, symbols);
    if (found.size() > 1 || !StepOutOfWrongCall(dump, bytes, registers)) return found;
  }
  Addresses callers = Walk(dump, bytes, registers, most, symbols);
  callers.front().returns = true;
  addresses.insert(addresses.end(), callers.begin(), callers.end());
  return addresses;
}

}  // namespace

ThreadStack StackOf(const Minidump& dump, const DumpBytes& bytes, const DumpThread& thread, std::size_t most,
                    Symbols& symbols) {
  ThreadStack stack;
  stack.thread = &thread;
  const DumpRegisters* const registers = dump.RegistersOf(thread);
  if (!registers) return stack;
  Addresses addresses = AddressesOf(dump, bytes, *registers, most + 1, symbols);
  stack.more = addresses.size() > most;
  if (stack.more) addresses.resize(most);
  for (const StackAddress& address : addresses) {
    StackFrame frame = {address.address, dump.ModuleAt(address.Place()), {}};
    std::vector<SourceFrame> sources = symbols.FramesAt(address);
    if (sources.empty()) sources.emplace_back();
    for (SourceFrame& source : sources) {
      frame.source = std::move(source);
      stack.frames.push_back(frame);
    }
  }
  return stack;
}

}  // namespace kestrova
