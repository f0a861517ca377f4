// The hives' files: damage, a lock that another process holds, and one state for a whole transaction.
#include <gmock/gmock.h>

#include <chrono>

#include "platform/handles.h"
#include "platform/registry_files.h"
#include "tests/child_process.h"
#include "tests/folders.h"
#include "tests/platform/hive_file.h"

namespace kvtest {

namespace {

namespace fs = std::filesystem;

constexpr LPCTSTR kPath = _T("Software\\Test");

// A registry of its own with the key kPath, which has a value and three sub-keys.
class HiveFile : public testing::Test {
 protected:
  void SetUp() override {
    Put(HKEY_CURRENT_USER, kPath, _T("a"), {REG_DWORD, Raw(1)});
    for (const LPCTSTR name : {_T("A"), _T("B"), _T("C")})
      ASSERT_EQ(Create(HKEY_CURRENT_USER, (Text(kPath) + _T("\\") + name).c_str()), ERROR_SUCCESS);
    TakeHiveFault(HKEY_CURRENT_USER, HiveFault::During::kReading);
    TakeHiveFault(HKEY_CURRENT_USER, HiveFault::During::kWriting);
  }

  // The bytes of the hive with its log.
  std::string Whole() const {
    EXPECT_TRUE(Ask(file_, "PRAGMA wal_checkpoint(TRUNCATE)").starts_with('0'));
    return ReadFile(file_);
  }

  const ScratchFolder scratch_;
  const fs::path file_ = scratch_.Path() / "user.hive";
  const RegistryIn registry_{scratch_.Path()};
};

TEST_F(HiveFile, DamagedHiveIsReported) {
  const std::string good = Whole();
  const std::tuple<const char*, std::string, LSTATUS> rows[] = {
      {"empty", "", ERROR_BADDB},
      {"no hive at all", std::string(8192, 'x'), ERROR_BADDB},
      {"pages overwritten", good.substr(0, 4096) + std::string(good.size() - 4096, '\xA5'), ERROR_BADDB},
      {"schema overwritten", good.substr(0, 100) + std::string(3996, '\xA5') + good.substr(4096), ERROR_BADDB},
      {"a later format", good.substr(0, 63) + '\x03' + good.substr(64), ERROR_UNKNOWN_REVISION},
  };
  for (const auto& [title, bytes, status] : rows) {
    SCOPED_TRACE(title);
    const ScratchFolder damaged;
    damaged.Write("user.hive", bytes);
    UseRegistry(damaged.Path());
    EXPECT_EQ(Open(HKEY_CURRENT_USER, kPath, KEY_READ), status);
    EXPECT_EQ(Create(HKEY_CURRENT_USER, kPath), status);
    EXPECT_EQ(RegQueryValueExW(HKEY_CURRENT_USER, _T("a"), nullptr, nullptr, nullptr, nullptr), status);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, kPath), status);
  }
}

// The last status of an enumeration from index 0 on, after at most 10 steps.
LSTATUS StatusOfWalk(HKEY key, bool values) {
  TCHAR name[256];
  LSTATUS status = ERROR_SUCCESS;
  for (DWORD i = 0, units = 256; status == ERROR_SUCCESS && i < 10; ++i, units = 256)
    status = values ? RegEnumValueW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr)
                    : RegEnumKeyExW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr);
  return status;
}

TEST_F(HiveFile, RowsThatContradictEachOtherAreDamage) {
  const std::string of_b = " WHERE path LIKE '%TEST_B'", of_value = " WHERE folded = 'A'";
  const std::tuple<bool, LPCTSTR, std::string> rows[] = {
      {false, _T(""), "UPDATE key SET name = ''" + of_b},
      {false, _T(""), "UPDATE key SET name = 'B' || char(0)" + of_b},
      {false, _T(""), "UPDATE key SET name = 'B\\C'" + of_b},
      {false, _T(""), "UPDATE key SET name = 'X'" + of_b},
      {false, _T(""), "UPDATE key SET path = '\\SOFTWARE\\TEST\\', name = ''" + of_b},
      {false, _T("\\B"), "UPDATE key SET parent = id" + of_b},
      {false, _T(""), "UPDATE key SET path = CAST(path AS BLOB)" + of_b},
      {true, _T(""), "UPDATE value SET name = 'x'" + of_value},
      {true, _T(""), "UPDATE value SET name = 'a' || char(0)" + of_value},
      {true, _T(""), "UPDATE value SET type = 'text'" + of_value},
      {true, _T(""), "UPDATE value SET type = 4294967296" + of_value},
      {true, _T(""), "UPDATE value SET data = 'text'" + of_value},
      {true, _T(""), "UPDATE value SET name = printf('%.20000c', 'a'), folded = printf('%.20000c', 'A')" + of_value},
  };
  const std::string good = Whole();
  for (const auto& [values, below, sql] : rows) {
    SCOPED_TRACE(sql);
    const ScratchFolder damaged;
    damaged.Write("user.hive", good);
    EXPECT_EQ(Ask(damaged.Path() / "user.hive", sql.c_str()), "");
    UseRegistry(damaged.Path());
    const Key key(HKEY_CURRENT_USER, (Text(kPath) + below).c_str());
    EXPECT_EQ(StatusOfWalk(key, values), ERROR_BADDB);
    const HiveFault fault = TakeHiveFault(HKEY_CURRENT_USER, HiveFault::During::kReading);
    EXPECT_EQ(fault.status, ERROR_BADDB);
    EXPECT_EQ(fault.file, (damaged.Path() / "user.hive").string());
  }
  UseRegistry(scratch_.Path());
  EXPECT_EQ(CheckHive(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

// A key's path in the table differs from that in the index: each step from the row led to the same row again.
TEST_F(HiveFile, WalkEndsAtARowThatDiffersFromItsIndex) {
  const std::string bytes = Whole(), path = "\\SOFTWARE\\TEST\\B";
  int places = 0;
  for (std::size_t at = bytes.find(path); at != bytes.npos; at = bytes.find(path, at + 1), ++places) {
    std::string changed = bytes;
    changed[at + path.size() - 1] = 'A';
    const ScratchFolder damaged;
    damaged.Write("user.hive", changed);
    UseRegistry(damaged.Path());
    EXPECT_EQ(CheckHive(HKEY_CURRENT_USER), ERROR_BADDB);
    const Key key(HKEY_CURRENT_USER, kPath);
    EXPECT_NE(StatusOfWalk(key, /*values=*/false), ERROR_SUCCESS);
  }
  EXPECT_EQ(places, 3) << "in the table and in two indexes";
}

// ---- an older format

// fixtures/format1.hive was written with format 1, whose folding makes names equal that the platform keeps apart.
class HiveOfFormat1 : public testing::Test {
 protected:
  HiveOfFormat1() {
    scratch_.Write("user.hive", ReadFile(SourceFile("tests/platform/fixtures/format1.hive")));
    UseRegistry(scratch_.Path());
    TakeHiveFault(HKEY_CURRENT_USER, HiveFault::During::kReading);
  }
  // Whether everything that was written is found by its name, and by walks.
  static bool HasAll() {
    for (const LPCTSTR name : {_T("größe\\ÖL"), _T("µM\\Unten"), _T("άξονας"), _T("ſ")}) {
      const Key key(HKEY_CURRENT_USER, (Text(_T("software\\alt\\")) + name).c_str());
      EXPECT_EQ(Number(key, _T("wert µ")), 7) << testing::PrintToString(Text(name));
    }
    const Key top(HKEY_CURRENT_USER, _T("Software\\Alt"));
    EXPECT_EQ(SubKeys(top).size(), 5U);
    EXPECT_THAT(ValueNames(top), testing::ElementsAre(_T("STRAẞE ſς"), _T("ÄÖÜ")));
    EXPECT_EQ(CheckHive(HKEY_CURRENT_USER), ERROR_SUCCESS);
    EXPECT_EQ(TakeHiveFault(HKEY_CURRENT_USER, HiveFault::During::kReading).status, ERROR_SUCCESS);
    return !HasFailure();
  }

  const ScratchFolder scratch_;
  const RegistryIn registry_{scratch_.Path()};
};

TEST_F(HiveOfFormat1, IsRefoldedWhenItIsOpened) {
  EXPECT_TRUE(HasAll());
  EXPECT_EQ(Ask(scratch_.Path() / "user.hive", "PRAGMA user_version"), "2");
  for (const LPCTSTR path : {_T("Software\\Alt\\S"), _T("Software\\Alt\\μm"), _T("Software\\Alt\\άξονασ")})
    EXPECT_EQ(Open(HKEY_CURRENT_USER, path), ERROR_FILE_NOT_FOUND) << testing::PrintToString(Text(path));
  EXPECT_EQ(Create(HKEY_CURRENT_USER, _T("Software\\Alt\\S")), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_CURRENT_USER, _T("Software\\Alt\\ſ")), ERROR_SUCCESS);
}

TEST_F(HiveOfFormat1, IsReadWhereItCannotBeWritten) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  fs::permissions(scratch_.Path() / "user.hive", fs::perms(0444));
  fs::permissions(scratch_.Path(), fs::perms(0555));
  EXPECT_TRUE(IsTrueInChild([] { return setgid(65534) == 0 && setuid(65534) == 0 && HasAll(); }));
}

// ---- other processes

TEST_F(HiveFile, LockOfAnotherProcessIsWaitedForOnce) {
  const SharedNumber step;
  const pid_t child = InChild([&] {
    sqlite3* connection = nullptr;
    if (sqlite3_open(file_.c_str(), &connection) != SQLITE_OK) return false;
    if (sqlite3_exec(connection, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK) return false;
    for (*step = 1; *step == 1;) usleep(1000);
    return sqlite3_close(connection) == SQLITE_OK;
  });
  while (*step == 0 && waitpid(child, nullptr, WNOHANG) == 0) usleep(1000);
  const Key key(HKEY_CURRENT_USER, kPath, KEY_ALL_ACCESS);
  const auto start = std::chrono::steady_clock::now();
  {
    const RegistryWaitLimit outer(60'000), limit(200);
    for (DWORD i = 2; i < 12; ++i) EXPECT_EQ(SetNumber(key, _T("a"), i), ERROR_BUSY);
    EXPECT_EQ(Number(key, _T("a")), 1) << "readers don't wait";
  }
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(200));
  EXPECT_LT(waited, std::chrono::milliseconds(2000));
  EXPECT_EQ(TakeHiveFault(HKEY_CURRENT_USER, HiveFault::During::kWriting).status, ERROR_BUSY);
  *step = 2;
  EXPECT_EQ(ExitCode(child), 0);
  EXPECT_EQ(SetNumber(key, _T("a"), 5), ERROR_SUCCESS);
}

TEST_F(HiveFile, TransactionReadsOneStateAndLocksWhenAKeyIsOpenedToWrite) {
  const auto set_in_child = [](DWORD number) {
    return IsTrueInChild([number] {
      const RegistryWaitLimit none(0);
      Key key;
      return RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, KEY_WRITE, &key) == 0 && SetNumber(key, _T("a"), number) == 0 &&
             Create(key, _T("Made meanwhile")) == 0;
    });
  };
  const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
  Key reading, writing;
  ASSERT_EQ(RegOpenKeyTransactedW(HKEY_CURRENT_USER, kPath, 0, KEY_READ, &reading, transaction, nullptr), 0);
  EXPECT_TRUE(set_in_child(2));
  EXPECT_EQ(Number(reading, _T("a")), 1);
  EXPECT_EQ(SubKeys(reading).size(), 3U);
  ASSERT_EQ(RegOpenKeyTransactedW(HKEY_CURRENT_USER, kPath, 0, KEY_WRITE | KEY_READ, &writing, transaction, nullptr),
            0);
  EXPECT_EQ(Number(writing, _T("a")), 2);
  EXPECT_FALSE(set_in_child(3));
  EXPECT_EQ(SetNumber(writing, _T("a"), 4), ERROR_SUCCESS);
  EXPECT_TRUE(CommitTransaction(transaction));
  CloseHandle(transaction);
  EXPECT_TRUE(set_in_child(5));
}

}  // namespace

}  // namespace kvtest
