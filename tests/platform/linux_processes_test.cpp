// Other processes: started, waited for, ended.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <thread>

#include "platform/process.h"
#include "platform/threads.h"
#include "tests/child_process.h"
#include "tests/scratch.h"

namespace {

class OtherProcess : public testing::Test {
 protected:
  ~OtherProcess() override {
    if (info.hProcess) CloseHandle(info.hProcess);
    if (info.hThread) CloseHandle(info.hThread);
  }
  bool Start(std::u16string line, LPCWSTR in = nullptr, LPCWSTR application = nullptr) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    return CreateProcessW(application, line.data(), nullptr, nullptr, FALSE, 0, nullptr, in, &startup, &info);
  }
  DWORD ExitCode() {
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(info.hProcess, &code));
    return code;
  }

  kvtest::ScratchFolder folder;
  PROCESS_INFORMATION info = {};
};

TEST_F(OtherProcess, GetsItsWordsFolderAndExitCode) {
  const std::u16string in = folder.Path().u16string();
  ASSERT_TRUE(Start(uR"(sh -c "printf '<%s>\n' \"$@\" > out; exit 7" sh "a b" c\\d "" "e""f" 1\"2)", in.c_str()));
  EXPECT_EQ(WaitForSingleObject(info.hProcess, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(), 7U);
  EXPECT_EQ(ExitCode(), 7U) << "asked twice";
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "out"), "<a b>\n<c\\\\d>\n<>\n<e\"f>\n<1\"2>\n");
}

TEST_F(OtherProcess, RunsUntilItIsTerminated) {
  ASSERT_TRUE(Start(u"sleep 100", nullptr, _T("\\BIN\\sleep")));
  EXPECT_EQ(WaitForSingleObject(info.hProcess, 0), WAIT_TIMEOUT);
  EXPECT_EQ(ExitCode(), STILL_ACTIVE);
  const HANDLE second = OpenProcess(PROCESS_TERMINATE, FALSE, info.dwProcessId);
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(TerminateProcess(second, 42));
  EXPECT_EQ(WaitForSingleObject(second, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(), 42U);
  EXPECT_FALSE(TerminateProcess(second, 43));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
  CloseHandle(second);
}

TEST_F(OtherProcess, EndedByASignalShowsItsNumber) {
  ASSERT_TRUE(Start(u"sleep 100"));
  kill(pid_t(info.dwProcessId), SIGTERM);
  EXPECT_EQ(WaitForSingleObject(info.hProcess, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(), 128U + SIGTERM);
}

TEST_F(OtherProcess, StartingFailsForWhatIsNoProgram) {
  folder.Write("plain", "no program");
  EXPECT_FALSE(Start(u"no-such-program-of-any-kind"));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
  EXPECT_FALSE(Start(folder.Path().u16string() + u"/plain"));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
  EXPECT_FALSE(Start(u"   "));
}

TEST_F(OtherProcess, IsLookedForByItsNameAsItIs) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  folder.Write("SH", "another name");
  EXPECT_TRUE(Start(u"sh -c true"));
  std::filesystem::current_path(before);
}

// A handle of a process that has gone is open while its number comes up again.
TEST_F(OtherProcess, NumberUsedAgainNamesTheNewProcess) {
  ASSERT_TRUE(Start(u"true"));
  ASSERT_EQ(WaitForSingleObject(info.hProcess, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(), 0U);
  for (int i = 0; i < 100; ++i) {  // others take numbers too
    std::ofstream("/proc/sys/kernel/ns_last_pid") << info.dwProcessId - 1;
    const pid_t child = kvtest::InChild([] { return pause() == 0; });
    const bool same = DWORD(child) == info.dwProcessId;
    const HANDLE found = OpenProcess(SYNCHRONIZE, FALSE, DWORD(child));
    EXPECT_EQ(WaitForSingleObject(found, 0), WAIT_TIMEOUT);
    CloseHandle(found);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (same) return;
  }
  GTEST_SKIP() << "the system doesn't let this user choose a number";
}

TEST_F(OtherProcess, OfAnotherParentCanBeWaitedForAndEnded) {
  const pid_t child = kvtest::InChild([] { return pause() == 0; });
  info.hProcess = OpenProcess(SYNCHRONIZE, FALSE, DWORD(child));
  ASSERT_NE(info.hProcess, nullptr);
  EXPECT_EQ(ExitCode(), STILL_ACTIVE);
  EXPECT_TRUE(TerminateProcess(info.hProcess, 1));
  EXPECT_EQ(WaitForSingleObject(info.hProcess, INFINITE), WAIT_OBJECT_0);
  DWORD code = 0;
  EXPECT_FALSE(GetExitCodeProcess(info.hProcess, &code)) << "only the parent knows it";
  waitpid(child, nullptr, 0);
  EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, DWORD(child)), nullptr);
  EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, 0), nullptr);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
}

TEST_F(OtherProcess, ClosedHandlesLeaveNoZombie) {
  ASSERT_TRUE(Start(u"true"));
  siginfo_t ended;
  ASSERT_EQ(waitid(P_PID, info.dwProcessId, &ended, WEXITED | WNOWAIT), 0);
  CloseHandle(info.hProcess);
  CloseHandle(info.hThread);
  info.hProcess = info.hThread = nullptr;
  EXPECT_EQ(waitpid(pid_t(info.dwProcessId), nullptr, WNOHANG), -1) << "still there to be collected";
}

}  // namespace
