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

// After a call of a wrong address the instruction is in no module, and the caller's address is on top of the stack.
bool StepOutOfWrongCall(const Minidump& dump, const DumpBytes& bytes, DumpRegisters& registers) {
  std::uint64_t& stack = registers.general[DumpRegisters::kRsp];
  if (dump.ModuleAt(registers.rip)) return false;
  const auto caller = dump.WordAt(bytes, stack);
  if (!caller || !dump.ModuleAt(*caller - 1)) return false;
  registers.rip = *caller;
  stack += 8;
  return true;
}

Addresses AddressesOf(const Minidump& dump, const DumpBytes& bytes, DumpRegisters registers, std::size_t most,
                      Symbols& symbols) {
  Addresses addresses;
  const std::uint64_t first = registers.rip;
  const bool wrongCall = StepOutOfWrongCall(dump, bytes, registers);
  if (wrongCall) addresses.push_back({first, false});
  Addresses found = symbols.Unwind(registers, most);
  const Addresses chain = found.size() > 1 ? Addresses() : ByFramePointers(dump, bytes, registers, most);
  if (chain.size() > found.size()) found = chain;
  if (wrongCall && !found.empty()) found.front().returns = true;
  addresses.insert(addresses.end(), found.begin(), found.end());
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
