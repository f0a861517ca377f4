// The text that an object's dump prints.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace kvtest {

// Calls dump(FILE*) with a new file and returns the file's text.
template <class Dump>
std::string Dumped(Dump dump) {
  FILE* file = std::tmpfile();
  dump(file);
  std::string text(std::size_t(std::ftell(file)), '\0');
  std::rewind(file);
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

// An address as dumps print it.
inline std::string Address(const void* object) { return fmt::format("{:x}", reinterpret_cast<std::uintptr_t>(object)); }

inline std::string DumpBanner(const std::string& name) {
  return "\n============================ " + name + " ================================\n";
}

}  // namespace kvtest
