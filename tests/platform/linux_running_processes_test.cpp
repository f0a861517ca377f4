// Lists of running processes: this one, and a child with an awkward name whose file is gone.
#include <gtest/gtest.h>

#include <fstream>

#include "platform/running_processes.h"
#include "platform/threads.h"
#include "tests/scratch.h"

namespace {

namespace fs = std::filesystem;

std::u16string NameOf(DWORD id) {
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id);
  HMODULE module = nullptr;
  DWORD bytes = 0;
  TCHAR name[MAX_PATH] = {};
  EXPECT_TRUE(EnumProcessModules(process, &module, sizeof module, &bytes));
  EXPECT_EQ(bytes, sizeof module);
  const DWORD length = GetModuleBaseNameW(process, module, name, MAX_PATH);
  EXPECT_EQ(length, std::u16string_view(name).size());
  TCHAR cut[3] = {};
  EXPECT_EQ(GetModuleBaseNameW(process, nullptr, cut, 3), 2u);
  EXPECT_EQ(std::u16string(cut), std::u16string(name, 2));
  EXPECT_TRUE(CloseHandle(process));
  return name;
}

PROCESSENTRY32W SnapshotEntry(DWORD id) {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry = {};
  EXPECT_FALSE(Process32FirstW(snapshot, &entry));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_BAD_LENGTH));
  entry.dwSize = sizeof entry;
  BOOL more = Process32FirstW(snapshot, &entry);
  while (more && entry.th32ProcessID != id) more = Process32NextW(snapshot, &entry);
  EXPECT_TRUE(more) << "process " << id << " is not in the snapshot";
  PROCESSENTRY32W rest = entry;
  while (Process32NextW(snapshot, &rest)) {
  }
  EXPECT_EQ(GetLastError(), DWORD(ERROR_NO_MORE_FILES));
  EXPECT_TRUE(CloseHandle(snapshot));
  return entry;
}

TEST(RunningProcesses, ChildIsListedByItsProgram) {
  kvtest::ScratchFolder folder;
  const fs::path program = folder.Path() / "a) 7 (b.exe";
  fs::copy_file("/bin/sleep", program);
  std::u16string line = u"x 100";
  PROCESS_INFORMATION info = {};
  ASSERT_TRUE(CreateProcessW(program.u16string().c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             nullptr, &info));
  fs::remove(program);
  EXPECT_EQ(GetProcessId(info.hProcess), info.dwProcessId);
  EXPECT_EQ(NameOf(info.dwProcessId), u"a) 7 (b.exe");
  const PROCESSENTRY32W entry = SnapshotEntry(info.dwProcessId);
  EXPECT_EQ(std::u16string(entry.szExeFile), u"a) 7 (b.exe");
  EXPECT_EQ(entry.th32ParentProcessID, GetCurrentProcessId());
  EXPECT_EQ(entry.cntThreads, 1u);
  std::vector<DWORD> ids(100'000);
  DWORD bytes = 0;
  EXPECT_TRUE(EnumProcesses(ids.data(), DWORD(ids.size() * sizeof(DWORD)), &bytes));
  ids.resize(bytes / sizeof(DWORD));
  EXPECT_EQ(std::count(ids.begin(), ids.end(), info.dwProcessId), 1);
  EXPECT_EQ(std::count(ids.begin(), ids.end(), GetCurrentProcessId()), 1);
  EXPECT_TRUE(EnumProcesses(ids.data(), 7, &bytes));
  EXPECT_EQ(bytes, 4u);
  EXPECT_TRUE(TerminateProcess(info.hProcess, 0));
  EXPECT_EQ(WaitForSingleObject(info.hProcess, INFINITE), WAIT_OBJECT_0);
  HMODULE module = nullptr;
  EXPECT_FALSE(EnumProcessModules(info.hProcess, &module, sizeof module, &bytes));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
  CloseHandle(info.hProcess);
  CloseHandle(info.hThread);
}

TEST(RunningProcesses, WrongArgumentsFail) {
  EXPECT_EQ(CreateToolhelp32Snapshot(1, 0), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(GetProcessId(nullptr), 0u);
  TCHAR name[4];
  EXPECT_EQ(GetModuleBaseNameW(nullptr, nullptr, name, 4), 0u);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
  OSVERSIONINFOW version = {};
  EXPECT_FALSE(GetVersionExW(&version));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
}

TEST(RunningProcesses, VersionIsTheKernels) {
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  ASSERT_TRUE(GetVersionExW(&version));
  EXPECT_EQ(version.dwPlatformId, VER_PLATFORM_WIN32_NT);
  std::string release;
  std::ifstream("/proc/sys/kernel/osrelease") >> release;
  EXPECT_EQ(fs::path(version.szCSDVersion).string(), release);
  EXPECT_TRUE(
      release.starts_with(std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion)));
}

}  // namespace
