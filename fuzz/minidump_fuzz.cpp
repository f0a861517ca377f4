// Reads any bytes as a minidump. What the dump says must be in the file, and lists are sorted without overlaps.
#include <cstdlib>

#include "host/crash/minidump_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kestrova::DumpInMemory bytes({reinterpret_cast<const char*>(data), size});
  kestrova::Minidump dump;
  kestrova::DumpFault failure;
  const bool read = kestrova::ReadMinidump(bytes, dump, failure);
  if (read != failure.reason.empty() || failure.byte > size) std::abort();
  std::uint64_t end = 0;
  for (const kestrova::DumpRange& range : dump.memory) {
    if (range.address < end || range.at > size || range.size > size - range.at) std::abort();
    end = range.address + range.size;
    if (range.size >= 8 && !dump.WordAt(bytes, end - 8)) std::abort();
    if (dump.WordAt(bytes, end - 7) && range.size < 7) std::abort();
  }
  end = 0;
  for (const kestrova::DumpModule& module : dump.modules) {
    if (module.base < end || dump.ModuleAt(module.base) != &module) std::abort();
    end = module.base + module.size;
  }
  for (const kestrova::DumpThread& thread : dump.threads)
    if (!dump.ThreadWith(thread.id)) std::abort();
  return 0;
}
