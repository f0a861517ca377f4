// Crash snapshots on /proc, and the files that are written with them.
#include "platform/crash_snapshot.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/linux/process_view.h"

// ---- the arena

namespace {

// Only what is touched costs memory.
constexpr std::size_t kArenaBytes = std::size_t(512) << 20;
constexpr ULONGLONG kAddressSpace = 1ULL << 47;

std::pmr::monotonic_buffer_resource* ResourceAt(void* place) {
  return std::launder(static_cast<std::pmr::monotonic_buffer_resource*>(place));
}

}  // namespace

CrashArena::CrashArena()
    : m_memory(mmap(nullptr, kArenaBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
  if (m_memory == MAP_FAILED) m_memory = nullptr;
  if (m_memory)
    new (m_resource) std::pmr::monotonic_buffer_resource(m_memory, kArenaBytes, std::pmr::null_memory_resource());
}

CrashArena::~CrashArena() {
  if (!m_memory) return;
  std::destroy_at(ResourceAt(m_resource));
  munmap(m_memory, kArenaBytes);
}

std::pmr::memory_resource* CrashArena::Resource() { return m_memory ? ResourceAt(m_resource) : nullptr; }

// ---- the snapshot

struct CrashSnapshot::State {
  State(const CrashFault& fault, std::pmr::memory_resource* arena) : view(fault, arena) {}
  ProcessView view;
};

CrashSnapshot::CrashSnapshot(const CrashFault& fault, std::pmr::memory_resource* arena)
    : m_state(new (arena->allocate(sizeof(State), alignof(State))) State(fault, arena)) {}

CrashSnapshot::~CrashSnapshot() { std::destroy_at(m_state); }

bool CrashSnapshot::IsReadable() const { return m_state->view.IsReadable(); }

std::span<const CrashModule> CrashSnapshot::Modules() const { return m_state->view.modules; }

const CrashModule* CrashSnapshot::ModuleAt(ULONGLONG address) const {
  for (const CrashModule& module : m_state->view.modules)
    if (address >= module.base && address - module.base < module.imageSize) return &module;
  return nullptr;
}

std::string_view CrashSnapshot::Program() const { return m_state->view.program; }

std::size_t CrashSnapshot::Read(ULONGLONG address, void* target, std::size_t bytes) const {
  return m_state->view.Read(address, target, bytes);
}

namespace {

// The number after a name in a text of lines "Name:   number kB"; in bytes.
ULONGLONG Kilobytes(std::string_view text, std::string_view name) {
  const std::size_t line = text.find(name);
  if (line == text.npos) return 0;
  text.remove_prefix(line + name.size());
  text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
  ULONGLONG number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number * 1024;
}

DWORD Processors() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof set, &set) != 0) return 1;
  return DWORD(CPU_COUNT(&set));
}

}  // namespace

CrashFigures CrashSnapshot::Figures() const {
  const ProcessView& view = m_state->view;
  const std::pmr::string memory = view.File("/proc/meminfo");
  const std::pmr::string status = view.OwnFile("status");
  CrashFigures figures = {};
  figures.processors = Processors();
  figures.processorType = 8664;
  figures.architecture = 9;
  figures.physical = Kilobytes(memory, "MemTotal:");
  figures.physicalFree = Kilobytes(memory, "MemAvailable:");
  figures.pagingFile = figures.physical + Kilobytes(memory, "SwapTotal:");
  figures.pagingFileFree = figures.physicalFree + Kilobytes(memory, "SwapFree:");
  if (figures.physical > 0) figures.memoryInUse = DWORD(100 - figures.physicalFree * 100 / figures.physical);
  figures.addressSpace = kAddressSpace;
  figures.addressSpaceFree = kAddressSpace - std::min(kAddressSpace, Kilobytes(status, "VmSize:"));
  return figures;
}

// ---- files

namespace {

// The file beside the dump while it is written. A helper that was killed leaves one, which the process replaces.
struct PartName {
  char text[4352];
  PartName(const char* file, DWORD process) {
    const std::size_t length = std::min<std::size_t>(std::strlen(file), 4300);
    char* at = std::copy_n(file, length, text);
    *at++ = '~';
    at = std::to_chars(at, at + 12, process).ptr;
    std::strcpy(at, ".tmp");
  }
};

bool WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(std::size_t(count));
  }
  return true;
}

}  // namespace

bool CrashSnapshot::WriteDump(const char* file, MINIDUMP_TYPE type, std::string_view comment) const {
  const ProcessView& view = m_state->view;
  const PartName part(file, view.fault.process);
  unlink(part.text);
  // For this user only: it holds the program's memory.
  const int output = open(part.text, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (output < 0) return false;
  const bool written = WriteMinidump(view, Figures(), output, type, comment) && fsync(output) == 0;
  const bool done = close(output) == 0 && written && rename(part.text, file) == 0;
  if (!done) unlink(part.text);
  return done;
}

bool AppendToCrashReport(const char* path, std::string_view text) {
  bool is_new = true;
  int file = open(path, O_CREAT | O_EXCL | O_WRONLY | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0) {
    is_new = false;
    file = open(path, O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK);
  }
  if (file < 0) return false;
  struct stat facts = {};
  const bool is_file = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode);
  const bool done = is_file && WriteAll(file, text);
  if (!done && is_new) unlink(path);
  const bool restored = done || is_new || !is_file || ftruncate(file, facts.st_size) == 0;
  return close(file) == 0 && done && restored;
}

bool CrashFileFacts(std::string_view file, ULONGLONG& size, LONGLONG& changed) {
  char path[4096] = {};
  if (file.size() >= sizeof path) return false;
  std::copy(file.begin(), file.end(), path);
  struct stat facts = {};
  if (stat(path, &facts) != 0) return false;
  size = ULONGLONG(facts.st_size);
  changed = facts.st_mtime;
  return true;
}
