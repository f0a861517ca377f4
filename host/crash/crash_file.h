// What both commands on crash files print: faults, and addresses as text.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/crash/minidump_reader.h"

namespace kestrova {

// "0x000055d0c0ffee00", or with fewer digits.
std::string AddressText(std::uint64_t address, int digits = 16);
// Hexadecimal digits of bytes.
std::string HexText(std::string_view bytes);

// "libkv.so+0x1a2b", or the address if it is in no module.
std::string PlaceText(const Minidump& dump, std::uint64_t address);

// The file's part of a path of either system.
std::string FileNameOf(const std::string& path);

// Reads the dump. Throws Failure if the file is no minidump.
void ReadDumpFile(const DumpBytes& bytes, const std::string& file, Minidump& dump);

nlohmann::ordered_json FaultsJson(const std::vector<DumpFault>& faults);
// Prints a line on stderr for each fault and throws FoundErrors if there is one: the answer is not whole.
void ReportFaults(const std::string& file, const std::vector<DumpFault>& faults);

}  // namespace kestrova
