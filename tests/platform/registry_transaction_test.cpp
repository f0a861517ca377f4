// Conformance of the transacted calls.
#include "platform/errors.h"
#include "platform/handles.h"
#include "tests/platform/registry_support.h"

using kvtest::Key;
using kvtest::RegistryTest;

namespace {

class RegistryTransaction : public RegistryTest {
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

  // Makes the key "New" with a number, and deletes the key "Old", within the transaction.
  void Change() {
    ASSERT_EQ(RegCreateKeyTransactedW(key_, _T("New"), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &made_, nullptr,
                                      transaction_, nullptr),
              ERROR_SUCCESS);
    const DWORD number = 5;
    ASSERT_EQ(RegSetValueExW(made_, _T("N"), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4), ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKeyTransactedW(key_, _T("Old"), 0, 0, transaction_, nullptr), ERROR_SUCCESS);
  }

  HANDLE transaction_ = nullptr;
  Key made_;
};

TEST_F(RegistryTransaction, IsSeenInsideAtOnceAndOutsideAfterCommit) {
  ASSERT_EQ(Create(_T("Old")), ERROR_SUCCESS);
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
  ASSERT_EQ(Create(_T("Old")), ERROR_SUCCESS);
  Change();
  EXPECT_TRUE(CommitTransaction(transaction_));
  EXPECT_FALSE(CommitTransaction(transaction_));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_TRANSACTION_NOT_ACTIVE));
  EXPECT_EQ(RegSetValueExW(made_, _T("N"), 0, REG_SZ, nullptr, 0), ERROR_TRANSACTION_NOT_ACTIVE);
  Key opened;
  EXPECT_EQ(RegOpenKeyTransactedW(key_, _T("New"), 0, KEY_READ, &opened, transaction_, nullptr),
            ERROR_TRANSACTION_NOT_ACTIVE);
  EXPECT_FALSE(CommitTransaction(INVALID_HANDLE_VALUE));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
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
