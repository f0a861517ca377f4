// The registry's files: when they are made, who may use them, and what damage does to them.
#include <sys/stat.h>

#include "platform/handles.h"
#include "tests/platform/linux_registry_support.h"

namespace fs = std::filesystem;

namespace kvtest {

namespace {

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
    Key root;
    EXPECT_EQ(RegOpenKeyExW(hive, _T(""), 0, KEY_ALL_ACCESS, &root), ERROR_SUCCESS);
  }
  EXPECT_FALSE(fs::exists(scratch_.Path() / "deep"));
}

TEST_F(LinuxRegistry, FirstWriteMakesTheHivesOwnFile) {
  EXPECT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(folder_ / "user.hive"));
  EXPECT_FALSE(fs::exists(folder_ / "machine.hive"));
  EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, _T("a")), -ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 2), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(folder_ / "machine.hive"));
  EXPECT_EQ(Get(HKEY_CURRENT_USER, _T("a")), 1);
}

TEST_F(LinuxRegistry, FollowsTheVariableWithinTheProcess) {
  const fs::path other = scratch_.Path() / "other";
  EXPECT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  Key kept;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, KEY_READ, &kept), ERROR_SUCCESS);
  UseRegistry(other);
  EXPECT_EQ(Get(HKEY_CURRENT_USER, _T("a")), -ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 2), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(kept, _T("a"), nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  UseRegistry(folder_);
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
    EXPECT_EQ(SetNumber(key, name, 2), ERROR_TRANSACTION_NOT_ACTIVE);
    CloseHandle(transaction);
  };
  write(_T("a"));
  write(_T("b"));
  EXPECT_TRUE(
      IsTrueInChild([] { return Get(HKEY_CURRENT_USER, _T("a")) == 1 && Get(HKEY_CURRENT_USER, _T("b")) == 1; }));
  fs::remove_all(folder_);
  write(_T("c"));
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

TEST_F(LinuxRegistry, HandleOfARemovedHiveNamesNoKeyOfTheNextOne) {
  Key kept;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &kept, nullptr), 0);
  fs::remove_all(folder_);
  ASSERT_EQ(Create(HKEY_CURRENT_USER, _T("Software\\Other")), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(kept, _T("a"), 0, REG_SZ, nullptr, 0), ERROR_KEY_DELETED);
  EXPECT_EQ(RegQueryValueExW(kept, _T("a"), nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
  EXPECT_TRUE(fs::exists(folder_ / "user.hive"));
}

TEST_F(LinuxRegistry, DamagedHiveIsReported) {
  EXPECT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  ASSERT_TRUE(IsTrueInChild([&] {  // brings the log into the hive
    return Ask(folder_ / "user.hive", "PRAGMA wal_checkpoint(TRUNCATE)").starts_with('0');
  }));
  const std::string good = kvtest::ReadFile(folder_ / "user.hive");
  const struct {
    const char* title;
    std::string bytes;
  } rows[] = {
      {"empty", ""},
      {"no hive at all", std::string(8192, 'x')},
      {"pages overwritten", good.substr(0, 4096) + std::string(good.size() - 4096, '\xA5')},
      {"schema overwritten", good.substr(0, 100) + std::string(3996, '\xA5') + good.substr(4096)},
      {"another format", good.substr(0, 63) + '\x02' + good.substr(64)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const ScratchFolder damaged;
    damaged.Write("user.hive", row.bytes);
    UseRegistry(damaged.Path());
    EXPECT_EQ(Open(HKEY_CURRENT_USER, kPath, KEY_READ), ERROR_BADDB);
    EXPECT_EQ(Create(HKEY_CURRENT_USER, kPath), ERROR_BADDB);
    EXPECT_EQ(RegQueryValueExW(HKEY_CURRENT_USER, _T("a"), nullptr, nullptr, nullptr, nullptr), ERROR_BADDB);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, kPath), ERROR_BADDB);
  }
}

// The machine's hive lies in a folder of another user.
TEST_F(LinuxRegistry, OtherUserReadsAndIsRefusedToWrite) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 1), ERROR_SUCCESS);
  const ScratchFolder copied;  // the hive alone, as on read-only media
  Ask(folder_ / "machine.hive", "PRAGMA wal_checkpoint(TRUNCATE)");
  fs::copy_file(folder_ / "machine.hive", copied.Path() / "machine.hive");
  const ScratchFolder empty;
  for (const fs::path& folder : {scratch_.Path(), folder_.parent_path(), folder_, copied.Path(), empty.Path()}) {
    chmod(folder.c_str(), 0755);
  }
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
  EXPECT_TRUE(IsTrueInChild([&] {
    if (setgid(65534) != 0 || setuid(65534) != 0) return false;
    UseRegistry(empty.Path() / "below");
    EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, _T("a")), -ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, kPath), ERROR_ACCESS_DENIED);
    return !HasFailure();
  }));
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

}  // namespace

}  // namespace kvtest
