// Conformance of the calls on keys, and of the transacted calls.
#include <gmock/gmock.h>

#include "platform/handles.h"
#include "tests/platform/registry_support.h"
#include "tests/platform/status.h"

using kvtest::Key;
using RegistryKeys = kvtest::RegistryTest;
using kvtest::Text;

namespace {

TEST_F(RegistryKeys, OpensWhatExistsOnly) {
  ASSERT_EQ(Create(_T("One\\Two\\Three")), ERROR_SUCCESS);
  const std::pair<LPCTSTR, LSTATUS> rows[] = {
      {_T("One\\Two\\Three"), ERROR_SUCCESS},   {_T("oNE\\tWO"), ERROR_SUCCESS},
      {_T("One\\Two\\"), ERROR_SUCCESS},        {nullptr, ERROR_SUCCESS},
      {_T("One\\Three"), ERROR_FILE_NOT_FOUND}, {_T("One/Two"), ERROR_FILE_NOT_FOUND},
  };
  for (const auto& [path, status] : rows)
    EXPECT_EQ(Open(path), status) << testing::PrintToString(path ? Text(path) : Text());
  Key opened;
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, _T("\\Software"), 0, KEY_READ, &opened), ERROR_BAD_PATHNAME);
  EXPECT_EQ(RegOpenKeyExW(nullptr, _T("One"), 0, KEY_READ, &opened), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegOpenKeyExW(key_, _T("One"), REG_OPTION_OPEN_LINK, KEY_READ, &opened), ERROR_SUCCESS);
}

TEST_F(RegistryKeys, CreatingReportsNewOrExistingAndKeepsTheFirstForm) {
  const std::pair<LPCTSTR, DWORD> rows[] = {{_T("Made\\Below"), REG_CREATED_NEW_KEY},
                                            {_T("made\\BELOW"), REG_OPENED_EXISTING_KEY},
                                            {_T("MADE"), REG_OPENED_EXISTING_KEY},
                                            {_T("Made\\Below\\"), REG_OPENED_EXISTING_KEY}};
  for (const auto& [path, wanted] : rows) {
    Key made;
    DWORD disposition = 0;
    EXPECT_EQ(RegCreateKeyExW(key_, path, 0, nullptr, 0, KEY_READ, nullptr, &made, &disposition), ERROR_SUCCESS);
    EXPECT_EQ(disposition, wanted) << testing::PrintToString(Text(path));
  }
  EXPECT_EQ(SubKeys(), std::vector<Text>{_T("Made")});
  EXPECT_EQ(Create(_T("\\A")), ERROR_BAD_PATHNAME);
  EXPECT_EQ(Create(Text(255, 'n').c_str()), ERROR_SUCCESS);
}

TEST_F(RegistryKeys, CreatingTakesEmptyPathsAndRefusesNoneAndLongOnes) {
  Key made;
  DWORD disposition = 0;
  EXPECT_EQ(RegCreateKeyExW(key_, _T(""), 0, nullptr, 0, KEY_READ, nullptr, &made, &disposition), ERROR_SUCCESS);
  EXPECT_EQ(disposition, DWORD(REG_OPENED_EXISTING_KEY));
  EXPECT_EQ(RegCreateKeyExW(key_, nullptr, 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr), ERROR_BADKEY);
  EXPECT_EQ(Create(Text(256, 'n').c_str()), ERROR_INVALID_PARAMETER);
  Text deep = _T("d");
  for (int level = 4; level < 512; ++level) deep += _T("\\d");
  EXPECT_EQ(Create((deep + _T("\\d")).c_str()), ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryKeys, HandlesCarryTheRightsAskedFor) {
  ASSERT_EQ(Create(_T("Sub")), ERROR_SUCCESS);
  ASSERT_EQ(SetNumber(_T("Value"), 1), ERROR_SUCCESS);
  const std::tuple<REGSAM, bool, bool, bool> rows[] = {
      {KEY_READ, true, true, false},
      {KEY_WRITE, false, false, true},
      {KEY_QUERY_VALUE, true, false, false},
      {KEY_ENUMERATE_SUB_KEYS, false, true, false},
  };
  const auto expected = [](bool allowed) { return allowed ? ERROR_SUCCESS : ERROR_ACCESS_DENIED; };
  for (const auto& [rights, query, enumerate, set] : rows) {
    SCOPED_TRACE(testing::Message() << std::hex << rights);
    Key key;
    ASSERT_EQ(RegOpenKeyExW(key_, nullptr, 0, rights, &key), ERROR_SUCCESS);
    TCHAR name[16];
    DWORD units = 16;
    EXPECT_EQ(RegQueryValueExW(key, _T("Value"), nullptr, nullptr, nullptr, nullptr), expected(query));
    EXPECT_EQ(RegEnumValueW(key, 0, name, &units, nullptr, nullptr, nullptr, nullptr), expected(query));
    units = 16;
    EXPECT_EQ(RegEnumKeyExW(key, 0, name, &units, nullptr, nullptr, nullptr, nullptr), expected(enumerate));
    EXPECT_EQ(RegSetValueExW(key, _T("Other"), 0, REG_SZ, nullptr, 0), expected(set));
    EXPECT_EQ(kvtest::Create(key, _T("Sub")), ERROR_SUCCESS) << "the handle's rights don't matter for the keys below";
    EXPECT_EQ(RegDeleteValueW(key, _T("Other")), expected(set));
    RegDeleteValueW(key_, _T("Other"));
  }
}

TEST_F(RegistryKeys, EnumerationNeedsRoomForTheTerminator) {
  ASSERT_EQ(Create(_T("Name")), ERROR_SUCCESS);
  TCHAR name[8] = _T("before");
  DWORD units = 4;
  EXPECT_EQ(RegEnumKeyExW(key_, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
  EXPECT_EQ(Text(name), _T("before"));
  EXPECT_EQ(units, 4u);
  units = 5;
  EXPECT_EQ(RegEnumKeyExW(key_, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Text(name), _T("Name"));
  EXPECT_EQ(units, 4u);
}

TEST_F(RegistryKeys, DeletesATreeAndNothingBesideIt) {
  for (const LPCTSTR path : {_T("Tree\\A\\B"), _T("Tree\\C"), _T("Tree]"), _T("Tree!"), _T("Tre"), _T("Trees\\A")})
    ASSERT_EQ(Create(path), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteTreeW(key_, _T("TREE")), ERROR_SUCCESS);
  EXPECT_THAT(SubKeys(), testing::UnorderedElementsAre(_T("Tre"), _T("Tree!"), _T("Trees"), _T("Tree]")));
  EXPECT_EQ(Open(_T("Trees\\A")), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteTreeW(key_, _T("Tree")), ERROR_FILE_NOT_FOUND);
  SetNumber(_T("Value"), 1);
  EXPECT_EQ(RegDeleteTreeW(key_, nullptr), ERROR_SUCCESS);
  EXPECT_TRUE(SubKeys().empty());
  EXPECT_EQ(Number(_T("Value")), -ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(SetNumber(_T("Value"), 2), ERROR_SUCCESS) << "the key itself stays";
}

TEST_F(RegistryKeys, HandleOfADeletedKeySaysSo) {
  Key doomed;
  ASSERT_EQ(RegCreateKeyExW(key_, _T("Doomed"), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &doomed, nullptr), 0);
  ASSERT_EQ(RegDeleteTreeW(key_, _T("Doomed")), ERROR_SUCCESS);
  for (const bool again : {false, true}) {
    EXPECT_TRUE(!again || Create(_T("Doomed\\Sub")) == ERROR_SUCCESS);  // another key of that name
    TCHAR name[8];
    DWORD units = 8;
    EXPECT_EQ(kvtest::Number(doomed, _T("V")), -ERROR_KEY_DELETED);
    EXPECT_EQ(kvtest::SetNumber(doomed, _T("V"), 1), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteValueW(doomed, _T("V")), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumValueW(doomed, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumKeyExW(doomed, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(kvtest::Open(doomed, _T("Sub")), ERROR_KEY_DELETED);
    EXPECT_EQ(kvtest::Create(doomed, _T("Sub")), ERROR_KEY_DELETED);
  }
}

class RegistryTransaction : public kvtest::RegistryTest {
 protected:
  void SetUp() override {
    RegistryTest::SetUp();
    transaction_ = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    ASSERT_NE(transaction_, INVALID_HANDLE_VALUE);
  }
  void TearDown() override {
    if (transaction_) CloseHandle(transaction_);
    RegistryTest::TearDown();
  }

  // Makes the key "New" with a number, and deletes the key "Old", which is made before, within the transaction.
  void Change() {
    ASSERT_EQ(Create(_T("Old")), ERROR_SUCCESS);
    ASSERT_EQ(RegCreateKeyTransactedW(key_, _T("New"), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &made_, nullptr,
                                      transaction_, nullptr),
              ERROR_SUCCESS);
    ASSERT_EQ(kvtest::SetNumber(made_, _T("N"), 5), ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKeyTransactedW(key_, _T("Old"), 0, 0, transaction_, nullptr), ERROR_SUCCESS);
  }

  HANDLE transaction_ = nullptr;
  Key made_;
};

TEST_F(RegistryTransaction, IsSeenInsideAtOnceAndOutsideAfterCommit) {
  Change();
  Key inside;
  EXPECT_EQ(RegOpenKeyTransactedW(key_, _T("New"), 0, KEY_READ, &inside, transaction_, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(inside, _T("N"), nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Open(_T("New")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open(_T("Old")), ERROR_SUCCESS);
  EXPECT_TRUE(CommitTransaction(transaction_));
  EXPECT_EQ(Open(_T("New")), ERROR_SUCCESS);
  EXPECT_EQ(Open(_T("Old")), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTransaction, EndsOnce) {
  Change();
  EXPECT_TRUE(CommitTransaction(transaction_));
  EXPECT_EQ(StatusOf(CommitTransaction(transaction_)), ERROR_TRANSACTION_NOT_ACTIVE);
  EXPECT_EQ(RegSetValueExW(made_, _T("N"), 0, REG_SZ, nullptr, 0), ERROR_TRANSACTION_NOT_ACTIVE);
  Key opened;
  EXPECT_EQ(RegOpenKeyTransactedW(key_, _T("New"), 0, KEY_READ, &opened, transaction_, nullptr),
            ERROR_TRANSACTION_NOT_ACTIVE);
  EXPECT_EQ(StatusOf(CommitTransaction(INVALID_HANDLE_VALUE)), ERROR_INVALID_HANDLE);
}

TEST_F(RegistryTransaction, DeletesOneKeyWithoutSubKeysOnly) {
  ASSERT_EQ(Create(_T("One\\Two")), ERROR_SUCCESS);
  const auto remove = [this](LPCTSTR path) { return RegDeleteKeyTransactedW(key_, path, 0, 0, transaction_, nullptr); };
  EXPECT_EQ(remove(_T("One")), ERROR_ACCESS_DENIED);
  EXPECT_EQ(remove(_T("One\\TWO")), ERROR_SUCCESS);
  EXPECT_EQ(remove(_T("One\\Two")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(remove(_T("One")), ERROR_SUCCESS);
  EXPECT_EQ(remove(nullptr), ERROR_INVALID_PARAMETER);
}

}  // namespace
