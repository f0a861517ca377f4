// What the code of an exception means for the reader of a report or a dump.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "host/crash/minidump_reader.h"

namespace kestrova {

struct ExceptionText {
  std::uint32_t code;
  std::string_view name;     // such as "access violation"
  std::string_view meaning;  // one sentence: what the program did, and where to look
};

// The text of a code; a text for unknown ones.
const ExceptionText& ExceptionTextOf(std::uint32_t code);

// "write to address 0x0", or nothing: the first two parameters of an exception that has an access and an address.
std::string AccessText(std::uint32_t code, std::span<const std::uint64_t> parameters);

// "access violation (0xC0000005, signal 11), write to address 0x0"
std::string ExceptionLine(const DumpException& exception);

// A sentence on the address of an access, or nothing.
std::string_view AddressMeaning(std::uint64_t address);

}  // namespace kestrova
