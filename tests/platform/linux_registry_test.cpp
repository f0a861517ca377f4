// The registry's files: when they are made, which users have access, and many processes: forked
// children, eight processes with two threads each, and writers that are killed.
#include <sys/stat.h>

#include <csignal>
#include <random>
#include <thread>

#include "platform/handles.h"
#include "tests/child_process.h"
#include "tests/platform/hive_file.h"

namespace fs = std::filesystem;

namespace kvtest {

namespace {

constexpr LPCTSTR kPath = _T("Software\\Test");

// Open the key, or make it, and read or write a number in it.
LSTATUS Set(HKEY hive, const Text& name, DWORD number) {
  Key key;
  const LSTATUS status = RegCreateKeyExW(hive, kPath, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
  return status == ERROR_SUCCESS ? SetNumber(key, name.c_str(), number) : status;
}
LONGLONG Get(HKEY hive, const Text& name) {
  Key key;
  const LSTATUS status = RegOpenKeyExW(hive, kPath, 0, KEY_READ, &key);
  return status == ERROR_SUCCESS ? Number(key, name.c_str()) : -LONGLONG(status);
}

Text NameOf(int number) {
  const std::string digits = std::to_string(number);
  return Text(digits.begin(), digits.end());
}

// A registry of its own, whose folder doesn't exist yet.
class LinuxRegistry : public testing::Test {
 protected:
  const ScratchFolder scratch_;
  const fs::path folder_ = scratch_.Path() / "deep/registry";
  const RegistryIn registry_{folder_};
};

TEST_F(LinuxRegistry, ReadingMakesNothing) {
  for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    TCHAR name[8];
    DWORD units = 8;
    EXPECT_EQ(Open(hive, kPath, KEY_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegQueryValueExW(hive, _T("a"), nullptr, nullptr, nullptr, nullptr), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteValueW(hive, _T("a")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(hive, kPath), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegEnumKeyExW(hive, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegEnumValueW(hive, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    const Key root(hive, _T(""), KEY_ALL_ACCESS);
  }
  EXPECT_FALSE(fs::exists(scratch_.Path() / "deep"));
}

TEST_F(LinuxRegistry, FirstWriteMakesTheHivesOwnFile) {
  EXPECT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(folder_ / "user.hive") && !fs::exists(folder_ / "machine.hive"));
  EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, _T("a")), -ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 2), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(folder_ / "machine.hive"));
  EXPECT_EQ(Get(HKEY_CURRENT_USER, _T("a")), 1);
}

TEST_F(LinuxRegistry, TransactionsGoToTheHiveThatIsThere) {
  const auto write = [](LPCTSTR name) {
    const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    Key key;
    EXPECT_EQ(RegCreateKeyTransactedW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr,
                                      transaction, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(key, name, 1), ERROR_SUCCESS);
    EXPECT_TRUE(CommitTransaction(transaction));
    CloseHandle(transaction);
  };
  write(_T("a"));
  write(_T("b"));
  EXPECT_TRUE(
      IsTrueInChild([] { return Get(HKEY_CURRENT_USER, _T("a")) == 1 && Get(HKEY_CURRENT_USER, _T("b")) == 1; }));
  const Key kept(HKEY_CURRENT_USER, kPath, KEY_ALL_ACCESS);
  fs::remove_all(folder_);
  write(_T("c"));
  EXPECT_EQ(SetNumber(kept, _T("a"), 1), ERROR_KEY_DELETED) << "the key went with the old hive";
  EXPECT_TRUE(IsTrueInChild(
      [] { return Get(HKEY_CURRENT_USER, _T("b")) == -ERROR_FILE_NOT_FOUND && Get(HKEY_CURRENT_USER, _T("c")) == 1; }));
}

TEST_F(LinuxRegistry, ValuesReadTogetherFollowAnotherProcess) {
  for (int i = 0; i < 200; ++i) ASSERT_EQ(Set(HKEY_CURRENT_USER, NameOf(i), DWORD(i)), ERROR_SUCCESS);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(i)), i);
  const auto set_in_child = [](DWORD number) {
    return IsTrueInChild([number] { return Set(HKEY_CURRENT_USER, NameOf(7), number) == ERROR_SUCCESS; });
  };
  EXPECT_TRUE(set_in_child(1000));
  for (int i = 0; i < 200; ++i) EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(i)), i == 7 ? 1000 : i);
  EXPECT_TRUE(set_in_child(1001));
  EXPECT_EQ(Set(HKEY_CURRENT_USER, NameOf(8), 1002), ERROR_SUCCESS) << "an own change behind another's";
  EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(7)), 1001);
}

// The machine's hive lies in a folder of another user.
TEST_F(LinuxRegistry, OtherUserReadsAndIsRefusedToWrite) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 1), ERROR_SUCCESS);
  const ScratchFolder copied;  // the hive alone, as on read-only media
  Ask(folder_ / "machine.hive", "PRAGMA wal_checkpoint(TRUNCATE)");
  fs::copy_file(folder_ / "machine.hive", copied.Path() / "machine.hive");
  for (const fs::path& folder : {scratch_.Path(), folder_.parent_path(), folder_, copied.Path()})
    chmod(folder.c_str(), 0755);
  for (const fs::path& folder : {folder_, copied.Path()}) {
    EXPECT_TRUE(IsTrueInChild([&] {
      if (setgid(65534) != 0 || setuid(65534) != 0) return false;
      UseRegistry(folder);
      EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, _T("a")), 1);
      EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kPath, KEY_WRITE), ERROR_ACCESS_DENIED);
      EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, _T("Software\\New")), ERROR_ACCESS_DENIED);
      EXPECT_EQ(RegSetValueExW(HKEY_LOCAL_MACHINE, _T("a"), 0, REG_SZ, nullptr, 0), ERROR_ACCESS_DENIED);
      return !HasFailure();
    })) << folder;
  }
}

TEST_F(LinuxRegistry, ReaderWithoutRightsSeesLaterWrites) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 1), ERROR_SUCCESS);
  for (const fs::path& folder : {scratch_.Path(), folder_.parent_path(), folder_}) chmod(folder.c_str(), 0755);
  const SharedNumber written;
  const pid_t child = InChild([&] {
    if (setgid(65534) != 0 || setuid(65534) != 0 || Get(HKEY_LOCAL_MACHINE, _T("a")) != 1) return false;
    for (*written = 1; *written == 1;) continue;
    return Get(HKEY_LOCAL_MACHINE, _T("a")) == 2;
  });
  while (*written == 0 && waitpid(child, nullptr, WNOHANG) == 0) continue;
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 2), ERROR_SUCCESS);
  *written = 2;
  EXPECT_EQ(ExitCode(child), 0);
}

// ---- many processes

// Each child is forked while other threads open and close keys, and uses the registry itself.
TEST_F(LinuxRegistry, ForksAmongOpeningThreadsGoOn) {
  ASSERT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  const Key key(HKEY_CURRENT_USER, kPath);
  EXPECT_TRUE(IsTrueInChild([&] {
    alarm(60);  // a deadlock ends this child, and not the whole run
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&stop] {
        while (!stop) Open(HKEY_CURRENT_USER, kPath);
      });
    }
    bool good = true;
    for (int i = 0; i < 300 && good; ++i)
      good = IsTrueInChild([&] { return Get(HKEY_CURRENT_USER, _T("a")) == 1 && Number(key, _T("a")) == 1; });
    stop = true;
    for (std::thread& thread : threads) thread.join();
    return good;
  }));
}

TEST_F(LinuxRegistry, EightProcessesOfTwoThreadsLoseNothing) {
  constexpr int kProcesses = 8, kValues = 150;
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {  // also the making of the hive is a race
    children.push_back(InChild([p] {
      std::atomic<bool> good = true;
      const auto write = [p, &good](int first) {
        for (int i = p * kValues + first; i < (p + 1) * kValues && good; i += 2)
          good = Set(HKEY_CURRENT_USER, NameOf(i), DWORD(i)) == ERROR_SUCCESS && Get(HKEY_CURRENT_USER, NameOf(i)) == i;
      };
      std::thread other(write, 1);
      write(0);
      other.join();
      return good.load();
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(ExitCode(child), 0);
  for (int i = 0; i < kProcesses * kValues; ++i) EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(i)), i);
  EXPECT_EQ(Ask(folder_ / "user.hive", "PRAGMA integrity_check"), "ok");
}

TEST_F(LinuxRegistry, KilledWriterLosesNothingThatReturned) {
  std::mt19937 random(kvtest::PrintedSeed());
  const SharedNumber returned;
  int first = 1;
  for (int round = 0; round < 200; ++round) {
    *returned = first;
    const pid_t child = InChild([&] {
      for (int n = first + 1;; ++n) {
        if (Set(HKEY_CURRENT_USER, _T("last"), DWORD(n)) != 0) return false;
        if (Set(HKEY_CURRENT_USER, NameOf(n % 97), DWORD(n)) != 0) return false;
        *returned = n;
        if (n % 5 == 0 && RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\Tree")) > ERROR_FILE_NOT_FOUND) return false;
        if (n % 5 == 2 && Create(HKEY_CURRENT_USER, _T("Software\\Tree\\A\\B")) != 0) return false;
      }
    });
    const int wanted = first + int(random() % 20);
    while (*returned < wanted && waitpid(child, nullptr, WNOHANG) == 0) continue;
    for (std::atomic<unsigned> spin = random() % 20000; spin > 0; --spin) continue;
    kill(child, SIGKILL);
    EXPECT_EQ(ExitCode(child), 128 + SIGKILL);
    const LONGLONG last = Get(HKEY_CURRENT_USER, _T("last")), told = *returned;
    if (told > first) {
      EXPECT_TRUE(last == told || last == told + 1) << last << ", " << told;
      EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(int(told % 97))), told);
    }
    if (round % 10 == 9) {
      EXPECT_EQ(Ask(folder_ / "user.hive", "PRAGMA integrity_check"), "ok") << "round " << round;
    }
    first = int(told) + 1;
  }
}

}  // namespace

}  // namespace kvtest
