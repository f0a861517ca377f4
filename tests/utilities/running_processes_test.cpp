// The searches for a running program with this machine's processes, with failing calls, and with an older system's.
#include "share/utilities/running_processes.h"

#include <gtest/gtest.h>

#include "framework/text.h"
#include "share/utilities/internal/process_calls.h"

namespace {

// An older system with one process, which has no process-status library.
BOOL OldVersion(LPOSVERSIONINFOW version) { return version->dwPlatformId = VER_PLATFORM_WIN32_WINDOWS, TRUE; }
BOOL UnknownVersion(LPOSVERSIONINFOW version) { return version->dwPlatformId = VER_PLATFORM_WIN32s, TRUE; }
BOOL NoVersion(LPOSVERSIONINFOW) { return FALSE; }
HANDLE OneProcess(DWORD, DWORD) { return CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0); }
BOOL First(HANDLE, LPPROCESSENTRY32W entry) {
  TextView(_T("Tool.exe")).copy(entry->szExeFile, MAX_PATH);
  return TRUE;
}
BOOL Next(HANDLE, LPPROCESSENTRY32W) { return FALSE; }
HANDLE NoSnapshot(DWORD, DWORD) { return INVALID_HANDLE_VALUE; }
BOOL NoList(DWORD*, DWORD, LPDWORD) { return FALSE; }
BOOL NoModules(HANDLE, HMODULE*, DWORD, LPDWORD) { return FALSE; }

TEST(RunningProcesses, ThisProgramIsFound) {
  for (const auto& [name, found] : {std::pair{"TEST_Utilities", 1}, {"test_utilities.exe", 0}, {"test_utilitie", 0}}) {
    EXPECT_EQ(IsProcessAlreadyRunning(name), found) << name;
    EXPECT_EQ(IsProcessAlreadyRunning2(CString(name)), found) << name;
  }
  EXPECT_EQ(IsProcessAlreadyRunning2(nullptr), 0);
}

TEST(RunningProcesses, FailuresHaveTheirCodes) {
  const ProcessCalls& own = PlatformProcessCalls();
  const ProcessCalls old = {OldVersion, nullptr, nullptr, nullptr, OneProcess, First, Next};
  const auto with = [](ProcessCalls calls, auto ProcessCalls::*call, auto put) {
    calls.*call = put;
    return calls;
  };
  const std::tuple<std::string, ProcessCalls, int> rows[] = {
      {"", own, 632},
      {std::string(261, 'x'), own, 632},
      {std::string(260, 'x'), own, 0},
      {"x", with(own, &ProcessCalls::version, NoVersion), 606},
      {"x", with(own, &ProcessCalls::version, UnknownVersion), 607},
      {"x", with(own, &ProcessCalls::version, nullptr), 605},
      {"x", with(own, &ProcessCalls::name, nullptr), 605},
      {"test_utilities", with(own, &ProcessCalls::list, NoList), 0},
      {"unknown", with(own, &ProcessCalls::modules, NoModules), 1},
      {"tool.EXE", old, 1},
      {"tool", old, 0},
      {"tool.exe", with(old, &ProcessCalls::first, nullptr), 605},
      {"tool.exe", with(old, &ProcessCalls::snapshot, NoSnapshot), 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(FindProcess(std::get<0>(row).c_str(), std::get<1>(row)), std::get<2>(row)) << "row " << &row - rows;
  EXPECT_EQ(IsProcessAlreadyRunning(nullptr), 632);
  // A failed snapshot is reported to the debugger.
  testing::internal::CaptureStderr();
  EXPECT_EQ(FindProcessInSnapshot(_T("test_utilities"), with(own, &ProcessCalls::snapshot, NoSnapshot)), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "!!! Failed to gather information on system processes! \n");
}

}  // namespace
