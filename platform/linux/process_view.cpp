#include "platform/linux/process_view.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ctime>

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kMostFileBytes = 16 << 20;  // of a file in /proc
constexpr std::size_t kMostThreads = 20'000;
constexpr int kWaitForStop_ms = 1000;  // for all threads together

// "/proc/PROCESS/name" in a buffer of the caller.
struct ProcPath {
  char text[64];
  ProcPath(pid_t process, std::string_view name) {
    char* at = std::copy_n("/proc/", 6, text);
    at = std::to_chars(at, at + 12, process).ptr;
    *at++ = '/';
    at = std::copy_n(name.data(), std::min<std::size_t>(name.size(), 32), at);
    *at = '\0';
  }
};

// ---- mappings: "low-high rwxp offset device inode   file"

bool TakeNumber(std::string_view& line, ULONGLONG& number) {
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number, 16);
  if (error != std::errc() || end == line.data() + line.size()) return false;
  line.remove_prefix(std::size_t(end - line.data()) + 1);
  return true;
}

void SkipWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find(' '), line.size()));
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
}

bool ReadMapping(std::string_view line, Mapping& mapping) {
  if (!TakeNumber(line, mapping.low) || !TakeNumber(line, mapping.high) || line.size() < 5) return false;
  mapping.isReadable = line[0] == 'r';
  mapping.isWritable = line[1] == 'w';
  mapping.isExecutable = line[2] == 'x';
  mapping.isPrivate = line[3] == 'p';
  line.remove_prefix(5);
  if (!TakeNumber(line, mapping.offset)) return false;
  SkipWord(line);  // the device
  SkipWord(line);  // the inode
  constexpr std::string_view kDeleted = " (deleted)";
  if (line.ends_with(kDeleted)) line.remove_suffix(kDeleted.size());
  mapping.file = line;
  return mapping.low < mapping.high;
}

// ---- threads

struct DirectoryEntry {
  std::uint64_t inode;
  std::int64_t next;
  unsigned short bytes;
  unsigned char type;
  char name[];
};

// Calls a function with each number in the folder of the process's threads.
template <class Function>
void ForEachThread(pid_t process, Function function) {
  const int folder = open(ProcPath(process, "task").text, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  alignas(8) char buffer[4096];
  for (long bytes = 0; (bytes = syscall(SYS_getdents64, folder, buffer, sizeof buffer)) > 0;) {
    for (long at = 0; at < bytes;) {
      const auto* const entry = reinterpret_cast<const DirectoryEntry*>(buffer + at);
      pid_t id = 0;
      const std::string_view name = entry->name;
      if (std::from_chars(name.data(), name.data() + name.size(), id).ec == std::errc()) function(id);
      at += entry->bytes;
    }
  }
  close(folder);
}

void CopyRegisters(const user_regs_struct& from, CONTEXT& to) {
  to.ContextFlags = CONTEXT_ALL_REGISTERS;
  to.SegCs = WORD(from.cs);
  to.SegDs = WORD(from.ds);
  to.SegEs = WORD(from.es);
  to.SegFs = WORD(from.fs);
  to.SegGs = WORD(from.gs);
  to.SegSs = WORD(from.ss);
  to.EFlags = DWORD(from.eflags);
  to.Rax = from.rax;
  to.Rcx = from.rcx;
  to.Rdx = from.rdx;
  to.Rbx = from.rbx;
  to.Rsp = from.rsp;
  to.Rbp = from.rbp;
  to.Rsi = from.rsi;
  to.Rdi = from.rdi;
  to.R8 = from.r8;
  to.R9 = from.r9;
  to.R10 = from.r10;
  to.R11 = from.r11;
  to.R12 = from.r12;
  to.R13 = from.r13;
  to.R14 = from.r14;
  to.R15 = from.r15;
  to.Rip = from.rip;
}

// Of a stopped thread.
bool ReadRegisters(pid_t thread, CONTEXT& context) {
  user_regs_struct registers = {};
  if (ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0) return false;
  CopyRegisters(registers, context);
  user_fpregs_struct floats = {};
  static_assert(sizeof floats == sizeof context.FltSave);
  if (ptrace(PTRACE_GETFPREGS, thread, nullptr, &floats) == 0) {
    std::memcpy(context.FltSave, &floats, sizeof context.FltSave);
    context.MxCsr = floats.mxcsr;
  }
  return true;
}

}  // namespace

ProcessView::ProcessView(const CrashFault& of, std::pmr::memory_resource* memory)
    : fault(of), arena(memory), maps(memory), mappings(memory), modules(memory), program(memory), threads(memory) {
  threads.push_back({pid_t(fault.thread), false, true, fault.context});
  if (pid_t(fault.process) != getpid()) StopThreads();
  maps = OwnFile("maps");
  ReadMappings();
  program.resize(kPage);
  const ssize_t length = readlink(ProcPath(pid_t(fault.process), "exe").text, program.data(), program.size());
  program.resize(length > 0 ? std::size_t(length) : 0);
  FindModules();
}

ProcessView::~ProcessView() {
  for (const ThreadRegisters& thread : threads)
    if (thread.isStopped) ptrace(PTRACE_DETACH, thread.id, nullptr, nullptr);
}

// The faulting thread waits for the helper and its registers are known, so it is not stopped.
void ProcessView::StopThreads() {
  for (std::size_t before = 0; before < threads.size() && threads.size() < kMostThreads;) {
    before = threads.size();  // until no thread has started meanwhile
    ForEachThread(pid_t(fault.process), [this](pid_t id) {
      const auto is_same = [id](const ThreadRegisters& thread) { return thread.id == id; };
      if (threads.size() >= kMostThreads || std::any_of(threads.begin(), threads.end(), is_same)) return;
      if (ptrace(PTRACE_SEIZE, id, nullptr, nullptr) != 0) return;
      ptrace(PTRACE_INTERRUPT, id, nullptr, nullptr);
      threads.push_back({id, false, false, {}});
    });
  }
  timespec pause = {0, 100'000};
  int left = kWaitForStop_ms * 10;
  for (ThreadRegisters& thread : threads) {
    if (thread.id == pid_t(fault.thread)) continue;
    pid_t stopped = 0;
    while ((stopped = waitpid(thread.id, nullptr, __WALL | WNOHANG)) == 0 && --left > 0) nanosleep(&pause, nullptr);
    thread.isStopped = stopped == thread.id;
    thread.isKnown = thread.isStopped && ReadRegisters(thread.id, thread.context);
  }
}

void ProcessView::ReadMappings() {
  std::string_view rest = maps;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    Mapping mapping;
    if (ReadMapping(rest.substr(0, end), mapping)) mappings.push_back(mapping);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

// A module begins with the mapping of its file's first bytes.
void ProcessView::FindModules() {
  for (const Mapping& mapping : mappings) {
    const bool is_system_page = mapping.file == "[vdso]";
    if (mapping.offset != 0 || (!mapping.file.starts_with('/') && !is_system_page) || !mapping.isReadable) continue;
    Elf64_Ehdr header = {};
    if (Read(mapping.low, &header, sizeof header) < sizeof header) continue;
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) continue;
    ULONGLONG low = ~0ULL;
    ULONGLONG high = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(header.e_phnum, 64); ++i) {
      Elf64_Phdr segment = {};
      Read(mapping.low + header.e_phoff + i * sizeof segment, &segment, sizeof segment);
      if (segment.p_type != PT_LOAD) continue;
      low = std::min<ULONGLONG>(low, segment.p_vaddr);
      high = std::max<ULONGLONG>(high, segment.p_vaddr + segment.p_memsz);
    }
    if (low >= high) continue;
    low -= low % kPage;
    const ULONGLONG size = (high - low + kPage - 1) / kPage * kPage;
    const BuildId id = BuildIdOf(mapping.low);
    DWORD checksum = 0;
    std::memcpy(&checksum, id.bytes, std::min(id.count, sizeof checksum));
    modules.push_back({is_system_page ? std::string_view("linux-gate.so") : mapping.file, mapping.low, low, DWORD(size),
                       checksum, 0});
  }
}

BuildId ProcessView::BuildIdOf(ULONGLONG base) const {
  Elf64_Ehdr header = {};
  Read(base, &header, sizeof header);
  ULONGLONG first = ~0ULL;  // the lowest address of the file's own addresses
  Elf64_Phdr segment = {};
  for (std::size_t i = 0; i < std::min<std::size_t>(header.e_phnum, 64); ++i) {
    if (Read(base + header.e_phoff + i * sizeof segment, &segment, sizeof segment) < sizeof segment) break;
    if (segment.p_type == PT_LOAD) first = std::min<ULONGLONG>(first, segment.p_vaddr - segment.p_vaddr % kPage);
  }
  for (std::size_t i = 0; i < std::min<std::size_t>(header.e_phnum, 64); ++i) {
    if (Read(base + header.e_phoff + i * sizeof segment, &segment, sizeof segment) < sizeof segment) break;
    if (segment.p_type != PT_NOTE) continue;
    const ULONGLONG notes = base + segment.p_vaddr - first;
    for (ULONGLONG at = 0; at + sizeof(Elf64_Nhdr) < segment.p_memsz && at < kPage;) {
      Elf64_Nhdr note = {};
      if (Read(notes + at, &note, sizeof note) < sizeof note) break;
      at += sizeof note + (note.n_namesz + 3ULL) / 4 * 4;
      BuildId id = {{}, std::min<std::size_t>(note.n_descsz, sizeof id.bytes)};
      if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 && Read(notes + at, id.bytes, id.count) == id.count)
        return id;
      at += (note.n_descsz + 3ULL) / 4 * 4;
    }
  }
  return {};
}

bool ProcessView::IsReadable() const {
  char byte = 0;
  return !mappings.empty() && Read(mappings.front().low, &byte, 1) == 1;
}

std::size_t ProcessView::Read(ULONGLONG address, void* target, std::size_t bytes) const {
  std::size_t done = 0;
  while (done < bytes) {
    // First everything, then page by page up to the one that can't be read.
    for (const std::size_t most : {bytes - done, kPage - (address + done) % kPage}) {
      const std::size_t count = std::min(bytes - done, most);
      const iovec to = {static_cast<char*>(target) + done, count};
      const iovec from = {reinterpret_cast<void*>(address + done), count};
      const ssize_t copied = process_vm_readv(pid_t(fault.process), &to, 1, &from, 1, 0);
      if (copied > 0) {
        done += std::size_t(copied);
        break;
      }
      if (most != bytes - done || count == kPage) return done;
    }
  }
  return done;
}

std::pmr::string ProcessView::File(const char* path) const {
  std::pmr::string content(arena);
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return content;
  std::size_t length = 0;
  while (length < kMostFileBytes) {
    if (content.size() < length + kPage) content.resize(std::max(2 * content.size(), 4 * kPage));
    const ssize_t count = read(file, content.data() + length, content.size() - length);
    if (count <= 0) break;
    length += std::size_t(count);
  }
  close(file);
  content.resize(length);
  return content;
}

std::pmr::string ProcessView::OwnFile(std::string_view name) const {
  return File(ProcPath(pid_t(fault.process), name).text);
}

const Mapping* ProcessView::MappingAt(ULONGLONG address) const {
  for (const Mapping& mapping : mappings)
    if (address >= mapping.low && address < mapping.high) return &mapping;
  return nullptr;
}
