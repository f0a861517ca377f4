// The modules of a dump as files of this machine: their tables for unwinding stacks, their symbols and source lines.
//
// A file is used only if its build id is the one in the dump, so that an update since the crash gives no wrong names. A
// system without ELF files has an implementation without symbols.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/crash/minidump_reader.h"

namespace kestrova {

struct StackAddress {
  std::uint64_t address = 0;
  bool returns = false;  // a return address, else an instruction that was interrupted
  // What is looked up: for a return address the call before it.
  std::uint64_t Place() const { return address - (returns ? 1 : 0); }
};

// A function at an address. An address inside inlined functions has several.
struct SourceFrame {
  std::string function;      // demangled; empty if it is unknown
  std::uint64_t offset = 0;  // of the address from the function's start; 0 for an inlined function
  std::string source;        // file; empty if it is unknown
  int line = 0;              // from 1; 0 if it is unknown
  bool inlined = false;
};

// Whether the file of a module was found.
enum class ModuleFile {
  kNotAsked,  // no address of the module was looked up
  kFound,
  kUnproven,  // found, but the dump has no build id to compare
  kOther,     // the files found have other build ids
  kMissing,
  kNoReader,  // this system's build reads no symbols
};

class Symbols {
 public:
  // The dump and its bytes must live as long. A module is looked for at its path, and in the folders as
  // FOLDER/path, FOLDER/name and FOLDER/.build-id/xx/yyyy; its debug file there and where the system keeps them.
  Symbols(const Minidump& dump, const DumpBytes& bytes, const std::vector<std::string>& folders);
  ~Symbols();
  Symbols(const Symbols&) = delete;
  Symbols& operator=(const Symbols&) = delete;

  // The addresses of a stack, `most` at most, from the interrupted instruction on. Empty if they cannot be found.
  std::vector<StackAddress> Unwind(const DumpRegisters& registers, std::size_t most);
  // The functions at an address, the innermost first; empty if they are unknown.
  std::vector<SourceFrame> FramesAt(const StackAddress& at);
  ModuleFile FileOf(const DumpModule& module) const;

 private:
  struct Session;
  std::unique_ptr<Session> session_;
};

}  // namespace kestrova
