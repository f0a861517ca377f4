// The registry's files: when they are made, who may use them, and what damage does to them.
#include <sys/stat.h>

#include <map>
#include <random>

#include "platform/handles.h"
#include "tests/platform/linux_registry_support.h"

namespace fs = std::filesystem;

namespace kvtest {

namespace {

TEST_F(LinuxRegistry, ReadingMakesNothing) {
  for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    TCHAR name[8];
    DWORD units = 8;
    DWORD count = 7;
    EXPECT_EQ(Open(hive, kPath, KEY_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegQueryValueExW(hive, _T("a"), nullptr, nullptr, nullptr, nullptr), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteValueW(hive, _T("a")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyExW(hive, kPath, 0, 0), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(hive, kPath), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegEnumKeyExW(hive, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegEnumValueW(hive, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegQueryInfoKeyW(hive, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(count, 0u);
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

TEST_F(LinuxRegistry, WriteAfterTheHiveWasRemovedMakesANewOne) {
  EXPECT_EQ(Set(HKEY_CURRENT_USER, _T("a"), 1), ERROR_SUCCESS);
  fs::remove_all(folder_);
  EXPECT_EQ(Create(HKEY_CURRENT_USER, _T("Software\\Other")), ERROR_SUCCESS);
  EXPECT_EQ(Get(HKEY_CURRENT_USER, _T("a")), -ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(fs::exists(folder_ / "user.hive"));
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
  UseRegistry(scratch_.Path() / "another");
  write(_T("d"));
  EXPECT_EQ(Get(HKEY_CURRENT_USER, _T("d")), 1);
  EXPECT_EQ(Get(HKEY_CURRENT_USER, _T("c")), -ERROR_FILE_NOT_FOUND);
}

TEST_F(LinuxRegistry, ValuesReadTogetherFollowAnotherProcess) {
  for (int i = 0; i < 200; ++i) ASSERT_EQ(Set(HKEY_CURRENT_USER, NameOf(i), DWORD(i)), ERROR_SUCCESS);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(i)), i);
  EXPECT_TRUE(IsTrueInChild([] { return Set(HKEY_CURRENT_USER, NameOf(7), 1000) == ERROR_SUCCESS; }));
  for (int i = 0; i < 200; ++i) EXPECT_EQ(Get(HKEY_CURRENT_USER, NameOf(i)), i == 7 ? 1000 : i);
}

// Own writes, one by one and in transactions, among those of another connection, which stands for another process.
TEST_F(LinuxRegistry, WhatIsRememberedFollowsOwnWritesAndOthers) {
  constexpr int kValues = 8, kSteps = 5000;
  std::mt19937 random(PrintedSeed());
  std::map<int, LONGLONG> model;
  for (int i = 0; i < kValues; ++i) ASSERT_EQ(Set(HKEY_CURRENT_USER, NameOf(i), DWORD(model[i] = i)), ERROR_SUCCESS);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((folder_ / "user.hive").c_str(), &other), SQLITE_OK);
  for (int step = 0; step < kSteps; ++step) {
    const int value = int(random() % kValues);
    const DWORD number = random();
    switch (random() % 8) {
      case 0: {  // as another process writes
        char sql[100];
        std::snprintf(sql, sizeof sql, "UPDATE value SET data = x'%08x' WHERE folded = '%d'", __builtin_bswap32(number),
                      value);
        ASSERT_EQ(sqlite3_exec(other, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(other);
        if (model[value] >= 0) model[value] = number;
        break;
      }
      case 1: {
        const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
        const bool commits = random() % 2, deletes = random() % 4 == 0;
        Key key;
        EXPECT_EQ(RegOpenKeyTransactedW(HKEY_CURRENT_USER, kPath, 0, KEY_WRITE, &key, transaction, nullptr), 0);
        auto inside = model;
        for (int i = 0; i < 3; ++i) {
          const int each = int(random() % kValues);
          EXPECT_EQ(SetNumber(key, NameOf(each).c_str(), number + DWORD(i)), ERROR_SUCCESS);
          inside[each] = number + DWORD(i);
        }
        if (deletes && RegDeleteValueW(key, NameOf(value).c_str()) == 0) inside[value] = -ERROR_FILE_NOT_FOUND;
        if (commits) {
          EXPECT_TRUE(CommitTransaction(transaction));
          model = inside;
        }
        CloseHandle(transaction);
        break;
      }
      case 2: {
        Key key;
        ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, KEY_WRITE, &key), ERROR_SUCCESS);
        RegDeleteValueW(key, NameOf(value).c_str());
        model[value] = -ERROR_FILE_NOT_FOUND;
        break;
      }
      case 3:
        EXPECT_EQ(Set(HKEY_CURRENT_USER, NameOf(value), number), ERROR_SUCCESS);
        model[value] = number;
        break;
      default: break;
    }
    const int asked = int(random() % kValues);
    ASSERT_EQ(Get(HKEY_CURRENT_USER, NameOf(asked)), model[asked]) << "step " << step;
  }
  sqlite3_close(other);
}

TEST_F(LinuxRegistry, HandleOfARemovedHiveNamesNoKeyOfTheNextOne) {
  Key kept;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &kept, nullptr), 0);
  fs::remove_all(folder_);
  ASSERT_EQ(Create(HKEY_CURRENT_USER, _T("Software\\Other")), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(kept, _T("a"), 0, REG_SZ, nullptr, 0), ERROR_KEY_DELETED);
  EXPECT_EQ(RegQueryValueExW(kept, _T("a"), nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
}

TEST_F(LinuxRegistry, RelativeFolderWithoutACurrentOneIsAStatus) {
  EXPECT_TRUE(IsTrueInChild([&] {
    const ScratchFolder gone;
    fs::current_path(gone.Path());
    fs::remove(gone.Path());
    UseRegistry("relative");
    return Open(HKEY_CURRENT_USER, kPath, KEY_READ) == ERROR_FILE_NOT_FOUND &&
           Create(HKEY_CURRENT_USER, kPath) == ERROR_ACCESS_DENIED;
  }));
}

TEST_F(LinuxRegistry, DamagedHiveIsTold) {
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
      {"cut in the first page", good.substr(0, 1000)},
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

// What another user may do with the machine's hive, of which the whole folder belongs to somebody else.
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
      EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kPath, MAXIMUM_ALLOWED), ERROR_SUCCESS);
      EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, _T("Software\\New")), ERROR_ACCESS_DENIED);
      EXPECT_EQ(RegSetValueExW(HKEY_LOCAL_MACHINE, _T("a"), 0, REG_SZ, nullptr, 0), ERROR_ACCESS_DENIED);
      EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPath), ERROR_ACCESS_DENIED);
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
  int to_child[2], to_parent[2];
  ASSERT_EQ(pipe(to_child) | pipe(to_parent), 0);
  char byte = 0;
  const pid_t child = InChild([&] {
    if (setgid(65534) != 0 || setuid(65534) != 0 || Get(HKEY_LOCAL_MACHINE, _T("a")) != 1) return false;
    if (write(to_parent[1], &byte, 1) != 1 || read(to_child[0], &byte, 1) != 1) return false;
    return Get(HKEY_LOCAL_MACHINE, _T("a")) == 2;
  });
  EXPECT_EQ(read(to_parent[0], &byte, 1), 1);
  EXPECT_EQ(Set(HKEY_LOCAL_MACHINE, _T("a"), 2), ERROR_SUCCESS);
  EXPECT_EQ(write(to_child[1], &byte, 1), 1);
  EXPECT_EQ(ExitCode(child), 0);
  for (const int fd : {to_child[0], to_child[1], to_parent[0], to_parent[1]}) close(fd);
}

}  // namespace

}  // namespace kvtest
