// Symbols for systems whose modules are not ELF files: stacks have modules and offsets only.
#include "host/crash/symbols.h"

namespace kestrova {

struct Symbols::Session {};

Symbols::Symbols(const Minidump&, const DumpBytes&, const std::vector<std::string>&) {}
Symbols::~Symbols() = default;

std::vector<StackAddress> Symbols::Unwind(const DumpRegisters&, std::size_t) { return {}; }
std::vector<SourceFrame> Symbols::FramesAt(const StackAddress&) { return {}; }
ModuleFile Symbols::FileOf(const DumpModule&) const { return ModuleFile::kNoReader; }

}  // namespace kestrova
