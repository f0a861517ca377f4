// ReadMinidump reads a minidump: what a crashed process was, its threads, modules and memory.
//
// The bytes may be anything. A file that is no minidump is refused. Any other damage becomes a fault of the dump, with
// its place in the file, and the rest is read: a support engineer needs what a full disk has left. Counts are compared
// with the bytes of their stream before memory is taken; a stream, a name or an id that is longer than the limits below
// is cut or left out with a fault. Any thread may call.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/crash/dump_bytes.h"

namespace kestrova {

inline constexpr std::size_t kMostDumpStreams = 1024;
inline constexpr std::size_t kMostDumpThreads = 65536;
inline constexpr std::size_t kMostDumpModules = 16384;
inline constexpr std::size_t kMostDumpRanges = 1 << 20;
inline constexpr std::size_t kMostDumpNameUnits = 4096;  // of a name in UTF-16
inline constexpr std::size_t kMostDumpText = 16 << 20;   // bytes of a stream that is a text
inline constexpr std::size_t kMostDumpFaults = 100;

// A fault in the file. The text is for humans.
struct DumpFault {
  std::uint64_t byte = 0;  // offset in the file
  std::string reason;      // empty without a fault
};

struct DumpStream {
  std::uint32_t type = 0;
  std::uint64_t size = 0, at = 0;  // bytes, and the offset of the first; the part that the file has
};

// Memory of the process that the file has.
struct DumpRange {
  std::uint64_t address = 0;
  std::uint64_t size = 0;  // bytes
  std::uint64_t at = 0;    // offset in the file
};

// The registers of an amd64 thread, numbered as in the tables of debuggers: rax, rdx, rcx, rbx, rsi, rdi, rbp, rsp, r8
// to r15.
struct DumpRegisters {
  static constexpr std::size_t kRbp = 6, kRsp = 7;
  std::array<std::uint64_t, 16> general = {};
  std::uint64_t rip = 0;
  std::uint32_t eflags = 0;
  std::uint16_t cs = 0, ss = 0;
};
inline constexpr std::array<const char*, 16> kDumpRegisterNames = {
    "rax", "rdx", "rcx", "rbx", "rsi", "rdi", "rbp", "rsp", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15"};

struct DumpThread {
  std::uint32_t id = 0;
  std::string name;  // UTF-8; empty if the dump has none
  DumpRange stack;   // size 0 if the dump has none
  std::optional<DumpRegisters> registers;
};

struct DumpModule {
  std::uint64_t base = 0;
  std::uint32_t size = 0;  // bytes from the base
  std::uint32_t checksum = 0, timestamp = 0;
  std::string path;      // UTF-8, as the process has loaded it
  std::string build_id;  // bytes of an ELF build id; empty if there is none
  std::string symbols;   // name of the file with symbols of a module in PE format; else empty

  bool Has(std::uint64_t address) const { return address >= base && address - base < size; }
};

struct DumpException {
  std::uint32_t thread = 0;  // id
  // The platform's code. A dump of Linux has the signal in its place, and the code, if any, as its first parameter.
  std::uint32_t code = 0;
  std::uint32_t signal = 0;  // of Linux; 0 if there is none
  std::uint32_t flags = 0;
  std::uint64_t address = 0;               // of the instruction
  std::vector<std::uint64_t> parameters;   // 15 at most, without the code
  std::optional<DumpRegisters> registers;  // at the exception
};

struct DumpSystem {
  std::uint16_t architecture = 0;  // 9: amd64
  unsigned processors = 0;
  std::uint32_t major = 0, minor = 0, build = 0;
  std::uint32_t platform = 0;  // 2: Windows
  bool IsLinux() const { return platform == 0x8201; }
  std::string text;  // service pack, or what the kernel says of itself; UTF-8
};

struct Minidump {
  std::uint64_t size = 0;       // bytes of the file
  std::uint32_t timestamp = 0;  // seconds since 1970, UTC
  std::uint64_t flags = 0;      // the kind of dump
  std::vector<DumpStream> streams;
  std::optional<DumpSystem> system;
  std::optional<std::uint32_t> process;
  std::optional<DumpException> exception;
  std::vector<DumpThread> threads;
  std::vector<DumpModule> modules;  // by base, without overlaps
  std::vector<DumpRange> memory;    // by address, without overlaps
  std::string command_line;         // blanks between the words; empty if the dump has none
  std::string comment;              // what the writer of the dump adds, such as the text of a C++ exception
  std::string distribution;         // the file that names the Linux distribution
  std::vector<DumpFault> faults;    // kMostDumpFaults at most

  // The module that has the address; null if none has.
  const DumpModule* ModuleAt(std::uint64_t address) const;
  const DumpThread* ThreadWith(std::uint32_t id) const;
  // The thread's registers, those at the exception for the thread that had it; null if the dump has none.
  const DumpRegisters* RegistersOf(const DumpThread& thread) const;
  // Reads memory of the process; nothing if the dump does not have all bytes.
  std::optional<std::uint64_t> WordAt(const DumpBytes& bytes, std::uint64_t address) const;
};

inline constexpr char kMinidumpSignature[] = "MDMP";

// Reads the dump and returns true. Returns false with the failure if the file has no header or no directory.
bool ReadMinidump(const DumpBytes& bytes, Minidump& dump, DumpFault& failure);

// The name of a type of stream, such as "thread list"; empty if it is unknown.
std::string_view DumpStreamName(std::uint32_t type);

}  // namespace kestrova
