// Other processes: opened, waited for, ended, listed; and more threads than other systems wait for at once.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "platform/running_processes.h"
#include "platform/threads.h"
#include "tests/child_process.h"
#include "tests/platform/status.h"
#include "tests/scratch.h"
#include "tests/semaphore.h"

namespace {

TEST(OtherProcess, CanBeWaitedForAndEndedOnce) {
  const pid_t child = kvtest::InChild([] { return pause() == 0; });
  const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, DWORD(child));
  ASSERT_NE(process, nullptr);
  EXPECT_EQ(WaitForSingleObject(process, 0), WAIT_TIMEOUT);
  EXPECT_TRUE(TerminateProcess(process, 1));
  EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(StatusOf(TerminateProcess(process, 1)), ERROR_ACCESS_DENIED);
  CloseHandle(process);
  EXPECT_EQ(OpenProcess(PROCESS_TERMINATE, FALSE, DWORD(child)), nullptr);
}

// A program with an awkward name, whose file is gone while it runs.
TEST(OtherProcess, IsListedByItsProgram) {
  const kvtest::ScratchFolder folder;
  const auto program = folder.Path() / "a) 7 (b.exe";
  std::filesystem::copy_file("/bin/sleep", program);
  int started[2];
  ASSERT_EQ(pipe2(started, O_CLOEXEC), 0);
  const pid_t child = kvtest::InChild([&] { return execl(program.c_str(), "x", "100", nullptr) == 0; });
  close(started[1]);
  char byte;
  EXPECT_EQ(read(started[0], &byte, 1), 0) << "the other end closes when the program starts";
  close(started[0]);
  std::filesystem::remove(program);

  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, DWORD(child));
  HMODULE module = nullptr;
  DWORD bytes = 0;
  TCHAR name[MAX_PATH] = {};
  EXPECT_TRUE(EnumProcessModules(process, &module, sizeof module, &bytes) && bytes == sizeof module);
  EXPECT_EQ(GetModuleBaseNameW(process, module, name, MAX_PATH), 11u);
  EXPECT_EQ(std::u16string(name), u"a) 7 (b.exe");

  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  BOOL more = Process32FirstW(snapshot, &entry);
  while (more && entry.th32ProcessID != DWORD(child)) more = Process32NextW(snapshot, &entry);
  EXPECT_EQ(std::u16string(entry.szExeFile), u"a) 7 (b.exe");
  EXPECT_EQ(entry.th32ParentProcessID, GetCurrentProcessId());
  EXPECT_EQ(entry.cntThreads, 1u);
  EXPECT_TRUE(CloseHandle(snapshot));

  std::vector<DWORD> ids(100'000);
  EXPECT_TRUE(EnumProcesses(ids.data(), DWORD(ids.size() * sizeof(DWORD)), &bytes));
  ids.resize(bytes / sizeof(DWORD));
  EXPECT_EQ(std::count(ids.begin(), ids.end(), DWORD(child)), 1);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(StatusOf(EnumProcessModules(process, &module, sizeof module, &bytes)), ERROR_INVALID_HANDLE);
  CloseHandle(process);
}

TEST(LinuxThreads, AnyNumberCanBeWaitedFor) {
  kvtest::Semaphore go{0};
  const auto run = [](void* semaphore) {
    static_cast<kvtest::Semaphore*>(semaphore)->acquire();
    return DWORD(0);
  };
  std::vector<HANDLE> handles;
  for (int i = 0; i < 100; ++i) handles.push_back(CreateThread(nullptr, 0, run, &go, 0, nullptr));
  EXPECT_EQ(WaitForMultipleObjects(100, handles.data(), FALSE, 1), WAIT_TIMEOUT);
  for (int i = 0; i < 100; ++i) go.release();
  EXPECT_EQ(WaitForMultipleObjects(100, handles.data(), TRUE, INFINITE), WAIT_OBJECT_0);
  for (const HANDLE handle : handles) CloseHandle(handle);
}

}  // namespace
