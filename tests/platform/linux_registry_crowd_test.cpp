// The registry among many: forked children, eight processes and their threads, and writers that are killed.
#include <atomic>
#include <csignal>
#include <random>
#include <thread>

#include "tests/platform/linux_registry_support.h"

namespace kvtest {

namespace {

TEST_F(LinuxRegistry, HandlesGoOnInAForkedChild) {
  Key key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), 0);
  EXPECT_TRUE(IsTrueInChild([&] { return RegSetValueExW(key, _T("child"), 0, REG_SZ, nullptr, 0) == 0; }));
  EXPECT_EQ(RegQueryValueExW(key, _T("child"), nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
}

// Each child is forked while other threads open and close keys, and uses the registry itself.
TEST_F(LinuxRegistry, ForksAmongOpeningThreadsGoOn) {
  ASSERT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  EXPECT_TRUE(IsTrueInChild([] {
    alarm(60);  // a deadlock ends this child, and not the whole run
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&stop] {
        while (!stop) Open(HKEY_CURRENT_USER, kPath);
      });
    }
    bool good = true;
    for (int i = 0; i < 300 && good; ++i) {
      good = IsTrueInChild([] { return Get(HKEY_CURRENT_USER, _T("a")) == 1; });
    }
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
