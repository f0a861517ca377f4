// Header (32 bytes): "MDMP", version, count and offset of the directory, checksum, time, flags. Directory: 12 bytes a
// stream: type, size, offset. All numbers are little-endian; offsets count from the start of the file. A list is its
// count, four bytes of padding from some writers, and its records.
#include "host/crash/minidump_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "framework/text.h"

namespace kestrova {
namespace {

enum StreamType : std::uint32_t {
  kUnused = 0,
  kThreadList = 3,
  kModuleList = 4,
  kMemoryList = 5,
  kException = 6,
  kSystemInfo = 7,
  kMemory64List = 9,
  kComment = 10,
  kMiscInfo = 15,
  kThreadNames = 24,
  kLinuxDistribution = 0x47670005,
  kLinuxCommandLine = 0x47670006,
};

constexpr struct {
  std::uint32_t type;
  std::string_view name;
} kStreamNames[] = {
    {kThreadList, "thread list"},
    {kModuleList, "module list"},
    {kMemoryList, "memory list"},
    {kException, "exception"},
    {kSystemInfo, "system information"},
    {8, "extended thread list"},
    {kMemory64List, "memory list of 64 bits"},
    {kComment, "comment"},
    {11, "comment in UTF-16"},
    {12, "handles"},
    {13, "function table"},
    {14, "unloaded modules"},
    {kMiscInfo, "process information"},
    {16, "memory map"},
    {17, "thread information"},
    {kThreadNames, "thread names"},
    {0x47670003, "/proc/cpuinfo"},
    {0x47670004, "/proc/PID/status"},
    {kLinuxDistribution, "distribution"},
    {kLinuxCommandLine, "/proc/PID/cmdline"},
    {0x47670007, "/proc/PID/environ"},
    {0x47670008, "/proc/PID/auxv"},
    {0x47670009, "/proc/PID/maps"},
    {0x4767000A, "link map"},
};

constexpr std::size_t kHeader = 32, kDirectoryEntry = 12;
constexpr std::uint16_t kAmd64 = 9, kVersion = 0xA793;
constexpr std::size_t kThread = 48, kModule = 108, kRange = 16, kRange64 = 16, kThreadName = 12;
constexpr std::size_t kExceptionBytes = 168, kSystemBytes = 56;
constexpr std::size_t kContext = 256;  // of the 1232 bytes of a context: up to the instruction pointer
constexpr std::size_t kMostBuildId = 64, kMostThreadNameUnits = 256;
constexpr std::uint32_t kElfRecord = 0x4270454C, kPdbRecord = 0x53445352;  // "LEpB", "RSDS"

DumpRegisters RegistersIn(std::string_view context) {
  const auto at = [&](std::size_t place) { return NumberAt<std::uint64_t>(context, place); };
  DumpRegisters registers;
  // rax, rcx, rdx, rbx, rsp, rbp, rsi, rdi, r8 to r15 in the context
  constexpr std::size_t kPlaces[] = {0, 2, 1, 3, 6, 7, 5, 4, 8, 9, 10, 11, 12, 13, 14, 15};
  for (std::size_t i = 0; i < std::size(kPlaces); ++i) registers.general[i] = at(120 + 8 * kPlaces[i]);
  registers.rip = at(248);
  registers.cs = NumberAt<std::uint16_t>(context, 56);
  registers.ss = NumberAt<std::uint16_t>(context, 66);
  registers.eflags = NumberAt<std::uint32_t>(context, 68);
  return registers;
}

class Parser {
 public:
  Parser(const DumpBytes& bytes, Minidump& dump) : bytes_(bytes), dump_(dump) {}

  bool Directory(DumpFault& failure);
  void Streams();

 private:
  struct List {
    std::string records;    // whole records only
    std::size_t count = 0;  // of the records
    std::uint64_t at = 0;   // offset of the first
  };

  void Fault(std::uint64_t byte, std::string reason);
  bool Take(std::uint64_t at, std::uint64_t size, std::uint64_t from, const char* what, std::string& target);
  const DumpStream* StreamOf(std::uint32_t type) const;
  bool TakeStream(std::uint32_t type, std::size_t needed, const char* what, std::string& target, std::uint64_t& at);
  List TakeList(std::uint32_t type, std::size_t record, std::size_t most, const char* what);
  std::string TextOf(std::uint32_t type, const char* what);
  std::string Name(std::uint64_t at, std::uint64_t from, std::size_t most, const char* what);
  std::optional<DumpRegisters> Registers(std::string_view location, std::uint64_t from);
  void AddRange(DumpRange range, std::uint64_t from);

  void System();
  void Process();
  void Exception();
  void Threads();
  void ThreadNames();
  void Modules();
  void ReadCodeView(std::string_view location, std::uint64_t from, DumpModule& module);
  void Memory();
  void Memory64();
  void SortModules();
  void SortMemory();

  const DumpBytes& bytes_;
  Minidump& dump_;
};

void Parser::Fault(std::uint64_t byte, std::string reason) {
  const std::size_t count = dump_.faults.size();
  if (count + 1 == kMostDumpFaults) reason = "from here on faults are left out";
  if (count < kMostDumpFaults) dump_.faults.push_back({byte, std::move(reason)});
}

// Reads bytes that a record at `from` names.
bool Parser::Take(std::uint64_t at, std::uint64_t size, std::uint64_t from, const char* what, std::string& target) {
  if (bytes_.Read(at, size, target)) return true;
  Fault(from, fmt::format("{} is said to be {} bytes at byte {}, and the file has {}", what, size, at, bytes_.Size()));
  return false;
}

// ---- directory, streams and lists

bool Parser::Directory(DumpFault& failure) {
  dump_.size = bytes_.Size();
  std::string header, entries;
  if (!bytes_.Read(0, kHeader, header))
    return failure = {bytes_.Size(), "the file ends in the header, which has 32 bytes"}, false;
  if (!header.starts_with(kMinidumpSignature)) return failure = {0, "a minidump begins with MDMP"}, false;
  if (NumberAt<std::uint16_t>(header, 4) != kVersion)
    Fault(4, fmt::format("the version is {:#06x}, not {:#06x}", NumberAt<std::uint16_t>(header, 4), kVersion));
  const auto announced = NumberAt<std::uint32_t>(header, 8);
  const auto at = NumberAt<std::uint32_t>(header, 12);
  dump_.timestamp = NumberAt<std::uint32_t>(header, 20);
  dump_.flags = NumberAt<std::uint64_t>(header, 24);
  const std::uint64_t room = at < bytes_.Size() ? (bytes_.Size() - at) / kDirectoryEntry : 0;
  const std::uint64_t count = std::min<std::uint64_t>({announced, room, kMostDumpStreams});
  const std::string shortage =
      fmt::format("{} streams are announced at byte {}, and the file has {}", announced, at, count);
  if (count == 0 || !bytes_.Read(at, count * kDirectoryEntry, entries)) return failure = {8, shortage}, false;
  if (count < announced) Fault(8, shortage);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = i * kDirectoryEntry;
    DumpStream stream = {NumberAt<std::uint32_t>(entries, entry), NumberAt<std::uint32_t>(entries, entry + 4),
                         NumberAt<std::uint32_t>(entries, entry + 8)};
    if (stream.type == kUnused) continue;
    const std::uint64_t left = stream.at < bytes_.Size() ? bytes_.Size() - stream.at : 0;
    if (stream.size > left) {
      Fault(at + entry, fmt::format("stream {:#x} is said to be {} bytes at byte {}, and the file has {}", stream.type,
                                    stream.size, stream.at, bytes_.Size()));
      if (left == 0) continue;
      stream.size = left;
    }
    if (StreamOf(stream.type)) {
      Fault(at + entry, fmt::format("a second stream {:#x}, which is left out", stream.type));
    } else {
      dump_.streams.push_back(stream);
    }
  }
  return true;
}

const DumpStream* Parser::StreamOf(std::uint32_t type) const {
  const auto found =
      std::find_if(dump_.streams.begin(), dump_.streams.end(), [&](const DumpStream& s) { return s.type == type; });
  return found == dump_.streams.end() ? nullptr : &*found;
}

// The first bytes of a stream; false if there is none, or if it is shorter.
bool Parser::TakeStream(std::uint32_t type, std::size_t needed, const char* what, std::string& target,
                        std::uint64_t& at) {
  const DumpStream* const stream = StreamOf(type);
  if (!stream) return false;
  at = stream->at;
  if (stream->size >= needed) return Take(at, needed, at, what, target);
  Fault(at, fmt::format("{} needs {} bytes, and its stream has {}", what, needed, stream->size));
  return false;
}

Parser::List Parser::TakeList(std::uint32_t type, std::size_t record, std::size_t most, const char* what) {
  List list;
  std::string head;
  // The count of the list of 64-bit ranges has 64 bits and is followed by the offset of the memory.
  const bool wide = type == kMemory64List;
  std::size_t skipped = wide ? 16 : 4;
  if (!TakeStream(type, skipped, what, head, list.at)) return list;
  const DumpStream& stream = *StreamOf(type);
  const std::uint64_t announced = wide ? NumberAt<std::uint64_t>(head, 0) : NumberAt<std::uint32_t>(head, 0);
  const std::uint64_t room = (stream.size - skipped) / record;
  list.count = std::size_t(std::min<std::uint64_t>({announced, room, most}));
  if (list.count < announced)
    Fault(list.at, fmt::format("{} has {} records by its count, its stream has room for {}, and {} are read", what,
                               announced, room, list.count));
  if (!wide && announced <= room && stream.size == 8 + announced * record) skipped = 8;  // with padding
  list.at += skipped;
  if (!Take(list.at, std::uint64_t{list.count} * record, list.at, what, list.records)) list.count = 0;
  return list;
}

std::string Parser::TextOf(std::uint32_t type, const char* what) {
  const DumpStream* const stream = StreamOf(type);
  std::string text;
  if (!stream) return text;
  const std::uint64_t size = std::min<std::uint64_t>(stream->size, kMostDumpText);
  if (size < stream->size) Fault(stream->at, fmt::format("{} has {} bytes and is cut", what, stream->size));
  Take(stream->at, size, stream->at, what, text);
  return text;
}

// A counted text in UTF-16, without the bytes that the file or the limit does not allow.
std::string Parser::Name(std::uint64_t at, std::uint64_t from, std::size_t most, const char* what) {
  std::string bytes;
  if (!Take(at, 4, from, what, bytes)) return {};
  const auto announced = NumberAt<std::uint32_t>(bytes, 0);
  const std::uint64_t size = std::min<std::uint64_t>(announced & ~1U, 2 * most);
  if (size < (announced & ~1U)) Fault(at, fmt::format("{} has {} bytes and is cut", what, announced));
  if (!Take(at + 4, size, at, what, bytes)) return {};
  std::basic_string<TCHAR> text;
  for (std::size_t i = 0; i < bytes.size(); i += 2) text += TCHAR(NumberAt<std::uint16_t>(bytes, i));
  return ToUtf8(text);
}

// The registers of a context, which a location (size, offset) names.
std::optional<DumpRegisters> Parser::Registers(std::string_view location, std::uint64_t from) {
  const auto size = NumberAt<std::uint32_t>(location, 0), at = NumberAt<std::uint32_t>(location, 4);
  if (size == 0 || (dump_.system && dump_.system->architecture != kAmd64)) return {};
  std::string context;
  if (size < kContext) {
    Fault(from, fmt::format("the registers of a thread have {} bytes, and they need {}", size, kContext));
    return {};
  }
  if (!Take(at, kContext, from, "the registers of a thread", context)) return {};
  return RegistersIn(context);
}

// ---- streams

void Parser::System() {
  std::string bytes;
  std::uint64_t at = 0;
  if (!TakeStream(kSystemInfo, kSystemBytes, "the system information", bytes, at)) return;
  DumpSystem system;
  system.architecture = NumberAt<std::uint16_t>(bytes, 0);
  system.processors = NumberAt<std::uint8_t>(bytes, 6);
  system.major = NumberAt<std::uint32_t>(bytes, 8);
  system.minor = NumberAt<std::uint32_t>(bytes, 12);
  system.build = NumberAt<std::uint32_t>(bytes, 16);
  system.platform = NumberAt<std::uint32_t>(bytes, 20);
  if (const auto text = NumberAt<std::uint32_t>(bytes, 24))
    system.text = Name(text, at + 24, kMostDumpNameUnits, "the system's text");
  if (system.architecture != kAmd64)
    Fault(at,
          fmt::format("the processor architecture is {}; registers are read for amd64 (9) only", system.architecture));
  dump_.system = std::move(system);
}

void Parser::Process() {
  constexpr std::uint32_t kHasId = 1;
  std::string bytes;
  std::uint64_t at = 0;
  if (TakeStream(kMiscInfo, 12, "the process information", bytes, at) && (NumberAt<std::uint32_t>(bytes, 4) & kHasId))
    dump_.process = NumberAt<std::uint32_t>(bytes, 8);
  dump_.command_line = TextOf(kLinuxCommandLine, "the command line");
  while (dump_.command_line.ends_with('\0')) dump_.command_line.pop_back();
  std::replace(dump_.command_line.begin(), dump_.command_line.end(), '\0', ' ');
  dump_.comment = TextOf(kComment, "the comment");
  dump_.comment.resize(std::min(dump_.comment.find('\0'), dump_.comment.size()));
  dump_.distribution = TextOf(kLinuxDistribution, "the distribution's text");
}

void Parser::Exception() {
  constexpr std::uint32_t kMostParameters = 15;
  std::string bytes;
  std::uint64_t at = 0;
  if (!TakeStream(kException, kExceptionBytes, "the exception", bytes, at)) return;
  DumpException exception;
  exception.thread = NumberAt<std::uint32_t>(bytes, 0);
  exception.code = NumberAt<std::uint32_t>(bytes, 8);
  exception.flags = NumberAt<std::uint32_t>(bytes, 12);
  exception.address = NumberAt<std::uint64_t>(bytes, 24);
  const auto count = NumberAt<std::uint32_t>(bytes, 32);
  if (count > kMostParameters) Fault(at + 32, fmt::format("the exception has {} parameters; 15 are possible", count));
  for (std::size_t i = 0; i < std::min(count, kMostParameters); ++i)
    exception.parameters.push_back(NumberAt<std::uint64_t>(bytes, 40 + 8 * i));
  if (dump_.system && dump_.system->IsLinux()) {
    exception.signal = std::exchange(exception.code, 0);
    if (!exception.parameters.empty()) {
      exception.code = std::uint32_t(exception.parameters.front());
      exception.parameters.erase(exception.parameters.begin());
    }
  }
  exception.registers = Registers(std::string_view(bytes).substr(160), at + 160);
  dump_.exception = std::move(exception);
}

void Parser::Threads() {
  const List list = TakeList(kThreadList, kThread, kMostDumpThreads, "the thread list");
  for (std::size_t i = 0; i < list.count; ++i) {
    const std::string_view record = std::string_view(list.records).substr(i * kThread, kThread);
    DumpThread thread;
    thread.id = NumberAt<std::uint32_t>(record, 0);
    thread.stack = {NumberAt<std::uint64_t>(record, 24), NumberAt<std::uint32_t>(record, 32),
                    NumberAt<std::uint32_t>(record, 36)};
    thread.registers = Registers(record.substr(40), list.at + i * kThread + 40);
    AddRange(thread.stack, list.at + i * kThread + 24);
    dump_.threads.push_back(std::move(thread));
  }
}

void Parser::ThreadNames() {
  const List list = TakeList(kThreadNames, kThreadName, kMostDumpThreads, "the list of thread names");
  std::vector<std::pair<std::uint32_t, DumpThread*>> by_id;
  for (DumpThread& thread : dump_.threads) by_id.emplace_back(thread.id, &thread);
  std::sort(by_id.begin(), by_id.end());
  for (std::size_t i = 0; i < list.count; ++i) {
    const auto id = NumberAt<std::uint32_t>(list.records, i * kThreadName);
    const auto found = std::lower_bound(by_id.begin(), by_id.end(), std::pair<std::uint32_t, DumpThread*>{id, nullptr});
    if (found == by_id.end() || found->first != id || !found->second->name.empty()) continue;
    found->second->name = Name(NumberAt<std::uint64_t>(list.records, i * kThreadName + 4), list.at + i * kThreadName,
                               kMostThreadNameUnits, "a thread's name");
  }
}

// What identifies the module's file. Location: size, offset.
void Parser::ReadCodeView(std::string_view location, std::uint64_t from, DumpModule& module) {
  constexpr std::size_t kPdbHeader = 24;  // signature, 16 bytes of id, age; the name follows
  const auto size = NumberAt<std::uint32_t>(location, 0), at = NumberAt<std::uint32_t>(location, 4);
  std::string record;
  if (size < 4) return;
  if (!Take(at, std::min<std::uint64_t>(size, kPdbHeader + kMostDumpNameUnits), from, "the id of a module", record))
    return;
  const auto signature = NumberAt<std::uint32_t>(record, 0);
  if (signature == kElfRecord) {
    module.build_id = record.substr(4, kMostBuildId);
    if (size - 4 > kMostBuildId) Fault(at, fmt::format("a build id has {} bytes and is cut", size - 4));
  } else if (signature == kPdbRecord && record.size() > kPdbHeader) {
    module.symbols = record.substr(kPdbHeader, record.find('\0', kPdbHeader) - kPdbHeader);
  }
}

void Parser::Modules() {
  const List list = TakeList(kModuleList, kModule, kMostDumpModules, "the module list");
  for (std::size_t i = 0; i < list.count; ++i) {
    const std::string_view record = std::string_view(list.records).substr(i * kModule, kModule);
    const std::uint64_t at = list.at + i * kModule;
    DumpModule module;
    module.base = NumberAt<std::uint64_t>(record, 0);
    module.size = NumberAt<std::uint32_t>(record, 8);
    module.checksum = NumberAt<std::uint32_t>(record, 12);
    module.timestamp = NumberAt<std::uint32_t>(record, 16);
    module.path = Name(NumberAt<std::uint32_t>(record, 20), at + 20, kMostDumpNameUnits, "the name of a module");
    ReadCodeView(record.substr(76), at + 76, module);
    if (module.size == 0 || module.base > UINT64_MAX - module.size) {
      Fault(at, fmt::format("a module of {} bytes at address {:#x}, which is left out", module.size, module.base));
    } else {
      dump_.modules.push_back(std::move(module));
    }
  }
}

void Parser::AddRange(DumpRange range, std::uint64_t from) {
  const std::uint64_t left = range.at < bytes_.Size() ? bytes_.Size() - range.at : 0;
  if (range.size > left) {
    Fault(from, fmt::format("memory of {} bytes is said to be at byte {}, and the file has {}", range.size, range.at,
                            bytes_.Size()));
    range.size = left;
  }
  if (range.size > 0 && range.address > UINT64_MAX - range.size) {
    Fault(from, fmt::format("memory of {} bytes at address {:#x} passes the end of the address space", range.size,
                            range.address));
    return;
  }
  if (range.size > 0) dump_.memory.push_back(range);
}

void Parser::Memory() {
  const List list = TakeList(kMemoryList, kRange, kMostDumpRanges, "the memory list");
  for (std::size_t i = 0; i < list.count; ++i) {
    const std::size_t record = i * kRange;
    AddRange({NumberAt<std::uint64_t>(list.records, record), NumberAt<std::uint32_t>(list.records, record + 8),
              NumberAt<std::uint32_t>(list.records, record + 12)},
             list.at + record);
  }
}

void Parser::Memory64() {
  const List list = TakeList(kMemory64List, kRange64, kMostDumpRanges, "the memory list of 64 bits");
  std::string base;
  if (list.count == 0 || !Take(list.at - 8, 8, list.at - 8, "the memory list of 64 bits", base)) return;
  std::uint64_t at = NumberAt<std::uint64_t>(base, 0);
  for (std::size_t i = 0; i < list.count; ++i) {
    const std::size_t record = i * kRange64;
    const auto size = NumberAt<std::uint64_t>(list.records, record + 8);
    AddRange({NumberAt<std::uint64_t>(list.records, record), size, at}, list.at + record);
    if (at > bytes_.Size() || size > bytes_.Size() - at) return;  // the following ones are after it
    at += size;
  }
}

// A module that begins inside another one is left out: an address has one module.
void Parser::SortModules() {
  auto& modules = dump_.modules;
  std::stable_sort(modules.begin(), modules.end(), [](const auto& a, const auto& b) { return a.base < b.base; });
  std::vector<DumpModule> sorted;
  for (DumpModule& module : modules) {
    if (!sorted.empty() && sorted.back().Has(module.base)) {
      Fault(StreamOf(kModuleList)->at, fmt::format("the module {} at address {:#x} is inside {} and is left out",
                                                   module.path, module.base, sorted.back().path));
    } else {
      sorted.push_back(std::move(module));
    }
  }
  modules = std::move(sorted);
}

// Stacks are in the thread list and in the memory list, so overlaps are usual: the bytes of the first range count.
void Parser::SortMemory() {
  auto& memory = dump_.memory;
  std::stable_sort(memory.begin(), memory.end(), [](const auto& a, const auto& b) { return a.address < b.address; });
  std::vector<DumpRange> sorted;
  std::uint64_t end = 0;
  for (DumpRange range : memory) {
    const std::uint64_t covered = range.address < end ? std::min(end - range.address, range.size) : 0;
    range.address += covered, range.at += covered, range.size -= covered;
    if (range.size == 0) continue;
    end = range.address + range.size;
    sorted.push_back(range);
  }
  memory = std::move(sorted);
}

void Parser::Streams() {
  System();
  Process();
  Exception();
  Threads();
  ThreadNames();
  Modules();
  Memory();
  Memory64();
  SortModules();
  SortMemory();
}

}  // namespace

const DumpModule* Minidump::ModuleAt(std::uint64_t address) const {
  const auto after = std::upper_bound(modules.begin(), modules.end(), address,
                                      [](std::uint64_t a, const DumpModule& module) { return a < module.base; });
  return after != modules.begin() && std::prev(after)->Has(address) ? &*std::prev(after) : nullptr;
}

const DumpThread* Minidump::ThreadWith(std::uint32_t id) const {
  const auto found = std::find_if(threads.begin(), threads.end(), [&](const DumpThread& t) { return t.id == id; });
  return found == threads.end() ? nullptr : &*found;
}

const DumpRegisters* Minidump::RegistersOf(const DumpThread& thread) const {
  if (exception && exception->thread == thread.id && exception->registers) return &*exception->registers;
  return thread.registers ? &*thread.registers : nullptr;
}

std::optional<std::uint64_t> Minidump::WordAt(const DumpBytes& bytes, std::uint64_t address) const {
  const auto after = std::upper_bound(memory.begin(), memory.end(), address,
                                      [](std::uint64_t a, const DumpRange& range) { return a < range.address; });
  if (after == memory.begin()) return {};
  const DumpRange& range = *std::prev(after);
  const std::uint64_t offset = address - range.address;
  std::string word;
  if (offset >= range.size || range.size - offset < 8 || !bytes.Read(range.at + offset, 8, word)) return {};
  return NumberAt<std::uint64_t>(word, 0);
}

bool ReadMinidump(const DumpBytes& bytes, Minidump& dump, DumpFault& failure) {
  dump = {};
  failure = {};
  Parser parser(bytes, dump);
  if (!parser.Directory(failure)) return false;
  parser.Streams();
  return true;
}

std::string_view DumpStreamName(std::uint32_t type) {
  for (const auto& each : kStreamNames)
    if (each.type == type) return each.name;
  return {};
}

}  // namespace kestrova
