// Writes a dump: the memory of the stacks, then the streams, then the memory that the type adds.
#include <cpuid.h>
#include <errno.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>

#include "platform/linux/fault.h"
#include "platform/linux/minidump_format.h"
#include "platform/linux/process_view.h"

namespace {

constexpr std::size_t kMostStackBytes = 1 << 20;     // of each thread, from its newest end
constexpr std::size_t kMostThreadStacks = 64 << 20;  // of all threads
constexpr std::size_t kRedZone = 128;                // below the stack pointer, in use by leaf functions
constexpr std::size_t kCodeBytes = 256;              // on each side of the instruction
constexpr std::size_t kChunk = 1 << 20;
constexpr std::size_t kMostStreams = 20;

struct Range {
  ULONGLONG address, bytes;
};

class Writer {
 public:
  Writer(const ProcessView& process, const CrashFigures& figures, int file, MINIDUMP_TYPE type,
         std::string_view comment)
      : process_(process),
        figures_(figures),
        file_(file),
        type_(type),
        comment_(comment),
        memory_(process.arena),
        large_(process.arena),
        directory_(process.arena),
        chunk_(process.arena) {
    directory_.reserve(kMostStreams);
    chunk_.resize(kChunk);
  }

  bool Write() {
    place_ = sizeof(minidump::Header) + kMostStreams * sizeof(minidump::Entry);
    if (lseek(file_, off_t(place_), SEEK_SET) < 0) return false;
    WriteThreads();
    WriteMemory({Code(), 2 * kCodeBytes});
    WriteModules();
    WriteException();
    WriteSystemInfo();
    WriteMiscInfo();
    WriteSystemFiles();
    if (!comment_.empty()) AddStream(minidump::kCommentA, Put(comment_.data(), comment_.size(), /*zeros=*/1));
    WriteCounted(minidump::kMemoryList, memory_);
    if (type_ & MiniDumpWithFullMemoryInfo) WriteMemoryInfo();
    ChooseLargeMemory();
    WriteLargeMemory();
    return WriteHead() && is_good_;
  }

 private:
  // ---- places

  // Appends bytes and zeros after them, aligned to four; returns where.
  minidump::Location Put(const void* bytes, std::size_t count, std::size_t zeros = 0) {
    constexpr char kZeros[8] = {};
    const minidump::Location location = {DWORD(count + zeros), DWORD(place_)};
    Output(bytes, count);
    Output(kZeros, zeros);
    Output(kZeros, (4 - place_ % 4) % 4);
    return location;
  }
  template <class Record>
  minidump::Location Put(const Record& record) {
    return Put(&record, sizeof record);
  }

  void Output(const void* bytes, std::size_t count) {
    const char* at = static_cast<const char*>(bytes);
    place_ += count;
    while (is_good_ && count > 0) {
      const ssize_t written = write(file_, at, count);
      if (written < 0 && errno == EINTR) continue;
      is_good_ = written > 0;
      at += is_good_ ? written : 0;
      count -= is_good_ ? std::size_t(written) : 0;
    }
  }

  void AddStream(DWORD stream, minidump::Location location) {
    if (directory_.size() < kMostStreams) directory_.push_back({stream, location});
  }

  // A list with the number of its records before them.
  template <class Record>
  void WriteCounted(DWORD stream, const std::pmr::vector<Record>& records) {
    const auto count = DWORD(records.size());
    const minidump::Location start = Put(count);
    Put(records.data(), records.size() * sizeof(Record));
    AddStream(stream, {DWORD(sizeof count + records.size() * sizeof(Record)), start.place});
  }

  // A text in UTF-16 after its number of bytes.
  DWORD PutName(std::string_view name) {
    std::pmr::u16string units(process_.arena);
    for (std::size_t at = 0; at < name.size();) {
      const auto lead = static_cast<unsigned char>(name[at]);
      const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
      char32_t point = more == 0 ? lead : lead & (0x3F >> more);
      for (std::size_t i = 1; i <= more && at + i < name.size(); ++i) point = point << 6 | (name[at + i] & 0x3F);
      at += more + 1;
      if (point >= 0x10000) {
        units += char16_t(0xD7C0 + (point >> 10));
        point = 0xDC00 | (point & 0x3FF);
      }
      units += char16_t(point);
    }
    const auto bytes = DWORD(2 * units.size());
    const minidump::Location start = Put(bytes);
    Put(units.data(), bytes, /*zeros=*/2);
    return start.place;
  }

  // ---- memory

  // Writes a range as far as it can be read and lists it.
  minidump::Memory WriteMemory(Range range) {
    minidump::Memory memory = {range.address, {0, DWORD(place_)}};
    for (ULONGLONG done = 0; done < range.bytes;) {
      const std::size_t wanted = std::min<ULONGLONG>(kChunk, range.bytes - done);
      const std::size_t count = process_.Read(range.address + done, chunk_.data(), wanted);
      Output(chunk_.data(), count);
      done += count;
      memory.location.bytes = DWORD(done);
      if (count < wanted) break;
    }
    Put("", 0);
    if (memory.location.bytes > 0) memory_.push_back(memory);
    return memory;
  }

  // From the stack pointer to the end of its mapping. After an overflow the pointer is below the mapping.
  Range StackOf(const CONTEXT& context) const {
    const Mapping* mapping = process_.MappingAt(context.Rsp);
    if (!mapping || !mapping->isReadable) {
      mapping = nullptr;
      for (const Mapping& next : process_.mappings) {
        const bool is_above = next.low > context.Rsp && next.low - context.Rsp < kMostStackBytes;
        if (is_above && next.isWritable && !mapping) mapping = &next;
      }
      if (!mapping) return {context.Rsp, 0};
      return {mapping->low, std::min<ULONGLONG>(mapping->high - mapping->low, kMostStackBytes)};
    }
    const ULONGLONG start = std::max(mapping->low, (context.Rsp - kRedZone) / 16 * 16);
    return {start, std::min<ULONGLONG>(mapping->high - start, kMostStackBytes)};
  }

  ULONGLONG Code() const {
    const ULONGLONG address = process_.fault.context.Rip;
    const Mapping* const mapping = process_.MappingAt(address);
    return mapping ? std::max(mapping->low, address - std::min<ULONGLONG>(address, kCodeBytes)) : address;
  }

  void WriteThreads() {
    std::pmr::vector<minidump::Thread> threads(process_.arena);
    const ULONGLONG first = place_;
    for (const ThreadRegisters& known : process_.threads) {
      if (!known.isKnown) continue;
      minidump::Thread thread = {};
      thread.id = DWORD(known.id);
      if (place_ - first < kMostThreadStacks) thread.stack = WriteMemory(StackOf(known.context));
      thread.context = Put(known.context);
      if (known.id == pid_t(process_.fault.thread)) context_ = thread.context;
      threads.push_back(thread);
    }
    WriteCounted(minidump::kThreadList, threads);
  }

  // ---- streams

  // The program first, as readers expect it.
  void WriteModules() {
    std::pmr::vector<minidump::Module> modules(process_.arena);
    for (const bool is_program : {true, false}) {
      for (const CrashModule& from : process_.modules) {
        if ((from.file == process_.program) != is_program) continue;
        minidump::Module module = {};
        module.base = from.base;
        module.imageSize = from.imageSize;
        module.checksum = from.checksum;
        module.name = PutName(from.file);
        const BuildId id = process_.BuildIdOf(from.base);
        char record[4 + sizeof id.bytes];
        std::memcpy(record, &minidump::kBuildIdSignature, 4);
        std::memcpy(record + 4, id.bytes, id.count);
        if (id.count > 0) module.codeView = Put(record, 4 + id.count);
        modules.push_back(module);
      }
    }
    WriteCounted(minidump::kModuleList, modules);
  }

  // As other writers of Linux dumps: the code is the signal. The platform's code is the first parameter.
  void WriteException() {
    const EXCEPTION_RECORD& record = process_.fault.record;
    minidump::ExceptionStream stream = {};
    stream.thread = process_.fault.thread;
    stream.code = DWORD(SignalOfException(record.ExceptionCode));
    stream.address = reinterpret_cast<ULONGLONG>(record.ExceptionAddress);
    stream.parameters = std::min<DWORD>(record.NumberParameters + 1, std::size(stream.information));
    stream.information[0] = record.ExceptionCode;
    for (DWORD i = 1; i < stream.parameters; ++i) stream.information[i] = record.ExceptionInformation[i - 1];
    stream.context = context_;
    AddStream(minidump::kException, Put(stream));
  }

  void WriteSystemInfo() {
    minidump::SystemInfo info = {};
    info.architecture = minidump::kArchitecture;
    info.processors = BYTE(std::min<DWORD>(figures_.processors, 255));
    info.platform = minidump::kPlatformLinux;
    unsigned registers[4] = {};
    if (__get_cpuid(0, &registers[0], &registers[1], &registers[2], &registers[3])) {
      const unsigned vendor[] = {registers[1], registers[3], registers[2]};
      std::memcpy(info.processor, vendor, sizeof vendor);
    }
    if (__get_cpuid(1, &registers[0], &registers[1], &registers[2], &registers[3])) {
      std::memcpy(info.processor + 12, &registers[0], 4);
      std::memcpy(info.processor + 16, &registers[3], 4);
      info.level = WORD(registers[0] >> 8 & 15);
      info.revision = WORD((registers[0] >> 4 & 15) << 8 | (registers[0] & 15));
    }
    utsname name = {};
    uname(&name);
    char text[sizeof name.release + sizeof name.version + 16] = "Linux ";
    std::strcat(std::strcat(std::strcat(text, name.release), " "), name.version);
    info.versionText = PutName(text);
    AddStream(minidump::kSystemInfo, Put(info));
  }

  void WriteMiscInfo() {
    minidump::MiscInfo info = {};
    info.bytes = sizeof info;
    info.flags = minidump::kHasProcess;
    info.process = process_.fault.process;
    AddStream(minidump::kMiscInfo, Put(info));
  }

  // The environment is left out: it can hold passwords.
  void WriteSystemFiles() {
    const auto add = [this](DWORD stream, const std::pmr::string& content) {
      if (!content.empty()) AddStream(stream, Put(content.data(), content.size()));
    };
    add(minidump::kLinuxCpuInfo, process_.File("/proc/cpuinfo"));
    add(minidump::kLinuxRelease, process_.File("/etc/os-release"));
    add(minidump::kLinuxProcStatus, process_.OwnFile("status"));
    add(minidump::kLinuxCommandLine, process_.OwnFile("cmdline"));
    add(minidump::kLinuxAuxv, process_.OwnFile("auxv"));
    add(minidump::kLinuxMaps, process_.maps);
  }

  // ---- memory by the type of the dump

  void WriteMemoryInfo() {
    constexpr DWORD kCommitted = 0x1000, kPrivate = 0x20000, kMapped = 0x40000, kImage = 0x1000000;
    const std::size_t count = process_.mappings.size();
    const minidump::MemoryInfoHeader header = {sizeof header, sizeof(minidump::MemoryInfo), count};
    const minidump::Location start = Put(header);
    for (const Mapping& mapping : process_.mappings) {
      minidump::MemoryInfo info = {};
      info.base = info.allocationBase = mapping.low;
      info.bytes = mapping.high - mapping.low;
      info.state = kCommitted;
      info.protection = ProtectionOf(mapping);
      info.allocationProtection = info.protection;
      info.kind = !mapping.file.starts_with('/') ? kPrivate : mapping.isPrivate ? kImage : kMapped;
      Put(info);
    }
    AddStream(minidump::kMemoryInfoList, {DWORD(sizeof header + count * sizeof(minidump::MemoryInfo)), start.place});
  }

  static DWORD ProtectionOf(const Mapping& mapping) {
    if (!mapping.isReadable) return 0x01;
    const DWORD writable = mapping.isWritable ? 0x04 : 0x02;
    return mapping.isExecutable ? writable << 4 : writable;
  }

  void ChooseLargeMemory() {
    for (const Mapping& mapping : process_.mappings) {
      if (!mapping.isReadable || mapping.file == "[vvar]") continue;
      const bool is_file = mapping.file.starts_with('/');
      const bool is_wanted = (type_ & MiniDumpWithFullMemory) ||
                             (type_ & MiniDumpWithDataSegs && is_file && mapping.isWritable) ||
                             (type_ & MiniDumpWithCodeSegs && is_file && mapping.isExecutable) ||
                             (type_ & MiniDumpWithPrivateReadWriteMemory && mapping.isPrivate && mapping.isWritable);
      if (is_wanted) large_.push_back({mapping.low, mapping.high - mapping.low});
    }
  }

  // The bytes follow the list at the end of the file, where their places may be above 4 GiB. Pages that can't be read
  // are zeros.
  void WriteLargeMemory() {
    if (large_.empty()) return;
    const ULONGLONG count = large_.size();
    const ULONGLONG list = 2 * sizeof(ULONGLONG) + count * sizeof(minidump::Memory64);
    const ULONGLONG first = place_ + list;
    const minidump::Location start = Put(count);
    Put(first);
    Put(large_.data(), count * sizeof(minidump::Memory64));
    AddStream(minidump::kMemory64List, {DWORD(list), start.place});
    for (const Range& range : large_) {
      for (ULONGLONG done = 0; done < range.bytes && is_good_;) {
        const std::size_t wanted = std::min<ULONGLONG>(kChunk, range.bytes - done);
        const std::size_t copied = process_.Read(range.address + done, chunk_.data(), wanted);
        const std::size_t to_page =
            copied == wanted ? wanted : std::min<std::size_t>(wanted, copied / 4096 * 4096 + 4096);
        std::fill(chunk_.begin() + std::ptrdiff_t(copied), chunk_.begin() + std::ptrdiff_t(to_page), '\0');
        Output(chunk_.data(), to_page);
        done += to_page;
      }
    }
  }

  bool WriteHead() {
    minidump::Header header = {};
    header.signature = minidump::kSignature;
    header.version = minidump::kVersion;
    header.streams = DWORD(directory_.size());
    header.directory = sizeof header;
    header.time = DWORD(std::time(nullptr));
    header.type = ULONGLONG(type_);
    if (lseek(file_, 0, SEEK_SET) < 0) return false;
    place_ = 0;
    Output(&header, sizeof header);
    Output(directory_.data(), directory_.size() * sizeof(minidump::Entry));
    return true;
  }

  const ProcessView& process_;
  const CrashFigures& figures_;
  const int file_;
  const MINIDUMP_TYPE type_;
  const std::string_view comment_;
  ULONGLONG place_ = 0;
  bool is_good_ = true;
  minidump::Location context_ = {};
  std::pmr::vector<minidump::Memory> memory_;
  std::pmr::vector<Range> large_;
  std::pmr::vector<minidump::Entry> directory_;
  std::pmr::vector<char> chunk_;
};

}  // namespace

bool WriteMinidump(const ProcessView& process, const CrashFigures& figures, int file, MINIDUMP_TYPE type,
                   std::string_view comment) {
  return Writer(process, figures, file, type, comment).Write();
}
