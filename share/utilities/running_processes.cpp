// The two searches for a running program.
#include "share/utilities/running_processes.h"

#include <array>
#include <cstring>

#include "framework/text.h"
#include "platform/console.h"
#include "platform/handles.h"
#include "share/utilities/internal/process_calls.h"

namespace {

constexpr std::size_t kMostProcesses = 1000;
constexpr std::size_t kMostNameBytes = 260;

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (IsOpen()) CloseHandle(handle_);
  }
  bool IsOpen() const { return handle_ && handle_ != INVALID_HANDLE_VALUE; }
  operator HANDLE() const { return handle_; }

 private:
  const HANDLE handle_;
};

CString Upper(CString text) { return text.MakeUpper(); }

CString NameOf(DWORD id, const ProcessCalls& calls) {
  TCHAR name[MAX_PATH] = _T("Unknown");
  const Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
  HMODULE module = nullptr;
  DWORD bytes = 0;
  if (process.IsOpen() && calls.modules(process, &module, sizeof(void*), &bytes))
    calls.name(process, module, name, MAX_PATH);
  return name;
}

int FindInList(const CString& upper, const ProcessCalls& calls) {
  if (!calls.list || !calls.modules || !calls.name) return QF_PROCESS_NO_FUNCTIONS;
  std::array<DWORD, kMostProcesses> ids;
  DWORD bytes = 0;
  if (!calls.list(ids.data(), sizeof ids, &bytes)) return 0;
  for (std::size_t i = 0; i < bytes / sizeof ids[0]; ++i) {
    if (Upper(NameOf(ids[i], calls)) == upper) return 1;
  }
  return 0;
}

// True if wanted(name) is true for a process of the snapshot; false, too, for an unreadable snapshot.
template <class Wanted>
bool FindInSnapshot(const Handle& snapshot, const ProcessCalls& calls, Wanted wanted) {
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = calls.first(snapshot, &entry); more; more = calls.next(snapshot, &entry)) {
    if (wanted(CString(entry.szExeFile))) return true;
  }
  return false;
}

}  // namespace

const ProcessCalls& PlatformProcessCalls() {
  static constexpr ProcessCalls kCalls = {
      GetVersionExW,   EnumProcesses, EnumProcessModules, GetModuleBaseNameW, CreateToolhelp32Snapshot,
      Process32FirstW, Process32NextW};
  return kCalls;
}

int FindProcess(const char* name, const ProcessCalls& calls) {
  if (!name || *name == '\0' || std::strlen(name) > kMostNameBytes) return QF_PROCESS_BAD_NAME;
  const CString upper = Upper(name);
  if (!calls.version) return QF_PROCESS_NO_FUNCTIONS;
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  if (!calls.version(&version)) return QF_PROCESS_NO_VERSION;
  if (version.dwPlatformId == VER_PLATFORM_WIN32_NT) return FindInList(upper, calls);
  if (version.dwPlatformId != VER_PLATFORM_WIN32_WINDOWS) return QF_PROCESS_UNKNOWN_PLATFORM;
  if (!calls.snapshot || !calls.first || !calls.next) return QF_PROCESS_NO_FUNCTIONS;
  const Handle snapshot(calls.snapshot(TH32CS_SNAPPROCESS, 0));
  return snapshot.IsOpen() &&
         FindInSnapshot(snapshot, calls, [&](const CString& found) { return Upper(found) == upper; });
}

int FindProcessInSnapshot(LPCWSTR name, const ProcessCalls& calls) {
  if (!name) return 0;
  const Handle snapshot(calls.snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  if (!snapshot.IsOpen() || !calls.first(snapshot, &entry)) {
    OutputDebugStringW(_T("!!! Failed to gather information on system processes! \n"));
    return 0;
  }
  return FindInSnapshot(snapshot, calls, [&](const CString& found) { return found.CompareNoCase(name) == 0; });
}

int IsProcessAlreadyRunning(const char* name) { return FindProcess(name, PlatformProcessCalls()); }

int IsProcessAlreadyRunning2(LPCWSTR name) { return FindProcessInSnapshot(name, PlatformProcessCalls()); }
