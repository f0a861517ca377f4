// Processes from the files of /proc. A process number may be reused before its files are read, so data for a handle is
// valid only if the handle's process still runs afterwards.
#include "platform/running_processes.h"

#include <dirent.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/errno_status.h"
#include "platform/linux/handle_table.h"
#include "platform/linux/process_handle.h"
#include "platform/linux/utf8.h"

namespace {

constexpr std::string_view kDeleted = " (deleted)";  // follows the path of a deleted file
constexpr LONG kNormalPriority = 8;
constexpr DWORD kModuleBytes = sizeof(void*);  // size of an HMODULE

// Returns false and sets the last status if the list cannot be read.
bool ListProcesses(std::vector<DWORD>& ids) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
  if (!folder) return FailWithErrno(errno);
  while (const dirent* entry = readdir(folder.get())) {
    char* end = nullptr;
    const unsigned long id = std::strtoul(entry->d_name, &end, 10);
    if (id > 0 && *end == '\0') ids.push_back(DWORD(id));
  }
  return true;
}

std::string FileOf(DWORD id, const char* name) { return "/proc/" + std::to_string(id) + "/" + name; }

// The name of the program's file; empty, with errno, if it cannot be read.
std::string ProgramName(DWORD id) {
  char path[PATH_MAX];
  const ssize_t length = readlink(FileOf(id, "exe").c_str(), path, sizeof path);
  if (length <= 0) return {};
  std::string_view name(path, std::size_t(length));
  if (name.ends_with(kDeleted)) name.remove_suffix(kDeleted.size());
  return std::string(name.substr(name.rfind('/') + 1));
}

void CopyName(std::string_view name, LPWSTR target, std::size_t units) {
  const std::u16string wide = WideFromSystem(name);
  target[wide.copy(target, units - 1)] = 0;
}

// Returns false if the process has ended.
bool Describe(DWORD id, PROCESSENTRY32W& entry) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(FileOf(id, "stat").c_str(), "re"), std::fclose);
  if (!file) return false;
  char line[1024];
  line[std::fread(line, 1, sizeof line - 1, file.get())] = '\0';
  // The line is "number (name) state parent ..."; the name may contain anything, brackets too.
  const char* const open = std::strchr(line, '(');
  const char* const close = std::strrchr(line, ')');
  int parent = 0;
  int threads = 0;
  constexpr char kFields[] = ") %*c %d %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %d";
  if (!open || !close || close < open || std::sscanf(close, kFields, &parent, &threads) != 2) return false;
  entry = {};
  entry.dwSize = sizeof entry;
  entry.th32ProcessID = id;
  entry.th32ParentProcessID = DWORD(parent);
  entry.cntThreads = DWORD(threads);
  entry.pcPriClassBase = kNormalPriority;
  const std::string program = ProgramName(id);
  CopyName(program.empty() ? std::string_view(open + 1, close) : program, entry.szExeFile, MAX_PATH);
  return true;
}

class Snapshot : public HandleObject {
 public:
  std::vector<PROCESSENTRY32W> entries;
  std::size_t next = 0;
};

BOOL Next(Snapshot& snapshot, LPPROCESSENTRY32W entry) {
  if (entry->dwSize != sizeof *entry) return FailWithStatus(ERROR_BAD_LENGTH);
  if (snapshot.next == snapshot.entries.size()) return FailWithStatus(ERROR_NO_MORE_FILES);
  *entry = snapshot.entries[snapshot.next++];
  return TRUE;
}

// The program of a handle's process; on failure empty, with the last status set.
std::string ProgramOf(HANDLE process) {
  const DWORD id = ProcessIdOf(process);
  if (id == 0) return {};
  std::string name = ProgramName(id);
  if (WaitForSingleObject(process, 0) != WAIT_TIMEOUT) {
    FailWithStatus(ERROR_INVALID_HANDLE);
    return {};
  }
  if (name.empty()) FailWithStatus(ERROR_ACCESS_DENIED);
  return name;
}

// The module handle of the program itself.
HMODULE ProgramModule() { return reinterpret_cast<HMODULE>(std::uintptr_t(0x400000)); }

}  // namespace

// ---- the process-status library

BOOL EnumProcesses(DWORD* ids, DWORD bytes, LPDWORD needed) {
  std::vector<DWORD> all;
  if (!ListProcesses(all)) return FALSE;
  const std::size_t count = std::min(all.size(), bytes / sizeof *ids);
  std::copy_n(all.begin(), count, ids);
  *needed = DWORD(count * sizeof *ids);
  return TRUE;
}

BOOL EnumProcessModules(HANDLE process, HMODULE* modules, DWORD bytes, LPDWORD needed) {
  if (ProgramOf(process).empty()) return FALSE;
  if (bytes >= kModuleBytes) *modules = ProgramModule();
  *needed = kModuleBytes;
  return TRUE;
}

DWORD GetModuleBaseNameW(HANDLE process, HMODULE module, LPWSTR buffer, DWORD units) {
  if (units == 0 || (module && module != ProgramModule())) return DWORD(FailWithStatus(ERROR_INVALID_HANDLE));
  const std::string name = ProgramOf(process);
  if (name.empty()) return 0;
  CopyName(name, buffer, units);
  return DWORD(std::u16string_view(buffer).size());
}

// ---- snapshots

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD) {
  if (flags != TH32CS_SNAPPROCESS) {
    FailWithStatus(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  std::vector<DWORD> ids;
  if (!ListProcesses(ids)) return INVALID_HANDLE_VALUE;
  auto snapshot = std::make_shared<Snapshot>();
  PROCESSENTRY32W entry;
  for (const DWORD id : ids) {
    if (Describe(id, entry)) snapshot->entries.push_back(entry);
  }
  return AddHandle(std::move(snapshot));
}

BOOL Process32FirstW(HANDLE handle, LPPROCESSENTRY32W entry) {
  const auto snapshot = FindHandle<Snapshot>(handle);
  if (!snapshot) return FALSE;
  snapshot->next = 0;
  return Next(*snapshot, entry);
}

BOOL Process32NextW(HANDLE handle, LPPROCESSENTRY32W entry) {
  const auto snapshot = FindHandle<Snapshot>(handle);
  return snapshot && Next(*snapshot, entry);
}

// ---- the system

BOOL GetVersionExW(LPOSVERSIONINFOW version) {
  if (version->dwOSVersionInfoSize != sizeof *version) return FailWithStatus(ERROR_INSUFFICIENT_BUFFER);
  utsname system;
  if (uname(&system) != 0) return FailWithErrno(errno);
  unsigned numbers[3] = {};
  std::sscanf(system.release, "%u.%u.%u", &numbers[0], &numbers[1], &numbers[2]);
  *version = {sizeof *version, numbers[0], numbers[1], numbers[2], VER_PLATFORM_WIN32_NT, {}};
  CopyName(system.release, version->szCSDVersion, std::size(version->szCSDVersion));
  return TRUE;
}
