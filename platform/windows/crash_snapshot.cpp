// Crash snapshots of this process by the system's own calls.
#include "platform/crash_snapshot.h"

#include <psapi.h>

#include <algorithm>
#include <new>
#include <utility>

#include "platform/utf8.h"

// ---- the arena

CrashArena::CrashArena() : m_memory(new (m_resource) std::pmr::monotonic_buffer_resource) {}

CrashArena::~CrashArena() { std::destroy_at(static_cast<std::pmr::monotonic_buffer_resource*>(m_memory)); }

std::pmr::memory_resource* CrashArena::Resource() {
  return static_cast<std::pmr::monotonic_buffer_resource*>(m_memory);
}

// ---- the snapshot

namespace {

// Modules above are not searched: existing readers of reports know addresses of 32 bits.
constexpr ULONGLONG kEndOfWalk = 1ULL << 32;
constexpr ULONGLONG kStepWithoutRegion = 0x10000;
constexpr DWORD kMostFileUnits = 4096;

std::pmr::string FileOf(ULONGLONG base, std::pmr::memory_resource* arena) {
  WCHAR file[kMostFileUnits] = {};
  const DWORD length = GetModuleFileNameW(reinterpret_cast<HMODULE>(base), file, kMostFileUnits);
  return {Utf8FromWide(TextView(file, length)).c_str(), arena};
}

std::size_t ReadOwn(ULONGLONG address, void* target, std::size_t bytes) {
  SIZE_T copied = 0;
  ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(address), target, bytes, &copied);
  return copied;
}

bool ReadHeader(ULONGLONG base, IMAGE_NT_HEADERS64& header) {
  IMAGE_DOS_HEADER start = {};
  if (ReadOwn(base, &start, sizeof start) < sizeof start || start.e_magic != IMAGE_DOS_SIGNATURE) return false;
  return ReadOwn(base + ULONGLONG(start.e_lfanew), &header, sizeof header) == sizeof header &&
         header.Signature == IMAGE_NT_SIGNATURE;
}

class FileHandle {
 public:
  FileHandle(const char* file, DWORD access, DWORD disposition, DWORD flags)
      : handle_(CreateFileW(WideFromUtf8(file).c_str(), access, 0, nullptr, disposition, flags, nullptr)) {}
  ~FileHandle() {
    if (*this) CloseHandle(handle_);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle_; }

 private:
  const HANDLE handle_;
};

}  // namespace

struct CrashSnapshot::State {
  State(const CrashFault& of, std::pmr::memory_resource* memory)
      : fault(of), files(memory), modules(memory), program(FileOf(0, memory)) {}
  const CrashFault& fault;
  std::pmr::vector<std::pmr::string> files;
  std::pmr::vector<CrashModule> modules;
  std::pmr::string program;
};

CrashSnapshot::CrashSnapshot(const CrashFault& fault, std::pmr::memory_resource* arena)
    : m_state(new (arena->allocate(sizeof(State), alignof(State))) State(fault, arena)) {
  std::pmr::vector<std::pair<ULONGLONG, IMAGE_NT_HEADERS64>> found(arena);
  ULONGLONG last = 0;
  for (ULONGLONG at = 0; at < kEndOfWalk;) {
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(reinterpret_cast<const void*>(at), &region, sizeof region) == 0 || region.RegionSize == 0) {
      at += kStepWithoutRegion;
      continue;
    }
    at += region.RegionSize;
    const auto base = reinterpret_cast<ULONGLONG>(region.AllocationBase);
    if (region.State != MEM_COMMIT || base <= last) continue;
    last = base;
    IMAGE_NT_HEADERS64 header = {};
    if (ReadHeader(base, header)) found.emplace_back(base, header);
  }
  m_state->files.reserve(found.size());
  for (const auto& [base, header] : found) {
    m_state->files.push_back(FileOf(base, arena));
    m_state->modules.push_back({m_state->files.back(), base, header.OptionalHeader.ImageBase,
                                header.OptionalHeader.SizeOfImage, header.OptionalHeader.CheckSum,
                                header.FileHeader.TimeDateStamp});
  }
}

CrashSnapshot::~CrashSnapshot() { std::destroy_at(m_state); }

bool CrashSnapshot::IsReadable() const { return true; }

std::span<const CrashModule> CrashSnapshot::Modules() const { return m_state->modules; }

const CrashModule* CrashSnapshot::ModuleAt(ULONGLONG address) const {
  MEMORY_BASIC_INFORMATION region = {};
  if (VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) == 0) return nullptr;
  static CrashModule module;
  static std::pmr::string file;
  module = {};
  module.base = reinterpret_cast<ULONGLONG>(region.AllocationBase);
  file = FileOf(module.base, std::pmr::get_default_resource());
  module.file = file;
  return module.base == 0 || file.empty() ? nullptr : &module;
}

std::string_view CrashSnapshot::Program() const { return m_state->program; }

std::size_t CrashSnapshot::Read(ULONGLONG address, void* target, std::size_t bytes) const {
  return ReadOwn(address, target, bytes);
}

CrashFigures CrashSnapshot::Figures() const {
  SYSTEM_INFO system = {};
  GetNativeSystemInfo(&system);
  MEMORYSTATUSEX memory = {};
  memory.dwLength = sizeof memory;
  GlobalMemoryStatusEx(&memory);
  return {system.dwNumberOfProcessors, system.dwProcessorType, system.wProcessorArchitecture, memory.dwMemoryLoad,
          memory.ullTotalPhys,         memory.ullAvailPhys,    memory.ullTotalPageFile,       memory.ullAvailPageFile,
          memory.ullTotalVirtual,      memory.ullAvailVirtual};
}

bool CrashSnapshot::WriteDump(const char* file, MINIDUMP_TYPE type, std::string_view) const {
  const FileHandle output(file, GENERIC_WRITE, CREATE_ALWAYS, FILE_FLAG_WRITE_THROUGH);
  if (!output) return false;
  EXCEPTION_RECORD record = m_state->fault.record;
  CONTEXT context = m_state->fault.context;
  EXCEPTION_POINTERS pointers = {&record, &context};
  MINIDUMP_EXCEPTION_INFORMATION exception = {m_state->fault.thread, &pointers, FALSE};
  return MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), output.Get(), type, &exception, nullptr,
                           nullptr);
}

// ---- files

bool AppendToCrashReport(const char* file, std::string_view text) {
  const FileHandle output(file, FILE_APPEND_DATA, OPEN_ALWAYS, 0);
  DWORD written = 0;
  return output && WriteFile(output.Get(), text.data(), DWORD(text.size()), &written, nullptr) &&
         written == text.size();
}

bool CrashFileFacts(std::string_view file, ULONGLONG& size, LONGLONG& changed) {
  WIN32_FILE_ATTRIBUTE_DATA facts = {};
  if (!GetFileAttributesExW(WideFromUtf8(file).c_str(), GetFileExInfoStandard, &facts)) return false;
  size = ULONGLONG(facts.nFileSizeHigh) << 32 | facts.nFileSizeLow;
  const ULONGLONG ticks = ULONGLONG(facts.ftLastWriteTime.dwHighDateTime) << 32 | facts.ftLastWriteTime.dwLowDateTime;
  constexpr LONGLONG kSecondsTo1970 = 11'644'473'600;
  changed = LONGLONG(ticks / 10'000'000) - kSecondsTo1970;
  return true;
}
