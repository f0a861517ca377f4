#include "host/crash/crash_file.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/shell/failure.h"
#include "host/shell/output.h"

namespace kestrova {

std::string AddressText(std::uint64_t address, int digits) { return fmt::format("0x{:0{}x}", address, digits); }

std::string HexText(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return text;
}

std::string FileNameOf(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

std::string PlaceText(const Minidump& dump, std::uint64_t address) {
  const DumpModule* const module = dump.ModuleAt(address);
  return module ? fmt::format("{}+{:#x}", FileNameOf(module->path), address - module->base) : AddressText(address);
}

void ReadDumpFile(const DumpBytes& bytes, const std::string& file, Minidump& dump) {
  DumpFault failure;
  if (!ReadMinidump(bytes, dump, failure))
    throw Failure(fmt::format("{} is no minidump: byte {}: {}", file, failure.byte, failure.reason), {.file = file});
}

nlohmann::ordered_json FaultsJson(const std::vector<DumpFault>& faults) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const DumpFault& fault : faults) list.push_back({{"byte", fault.byte}, {"message", fault.reason}});
  return list;
}

void ReportFaults(const std::string& file, const std::vector<DumpFault>& faults) {
  for (const DumpFault& fault : faults) PrintNote(fmt::format("{}: byte {}: {}", file, fault.byte, fault.reason));
  if (!faults.empty()) throw FoundErrors();
}

}  // namespace kestrova
