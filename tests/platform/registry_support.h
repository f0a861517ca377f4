// What the registry's tests share: a key of their own that is gone afterwards.
#pragma once

#include "tests/registry_calls.h"

namespace kvtest {

// Each test gets an empty key of the user's hive, opened with all rights.
class RegistryTest : public testing::Test {
 protected:
  static constexpr LPCTSTR kPath = _T("Software\\KvConformance\\Test");

  void SetUp() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvConformance"));
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr), 0);
  }
  void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvConformance")); }

  LSTATUS Create(LPCTSTR path) const { return kvtest::Create(key_, path); }
  LSTATUS Open(LPCTSTR path) const { return kvtest::Open(key_, path); }
  LSTATUS SetNumber(LPCTSTR name, DWORD number) const { return kvtest::SetNumber(key_, name, number); }
  LONGLONG Number(LPCTSTR name) const { return kvtest::Number(key_, name); }
  std::vector<Text> SubKeys() const { return kvtest::SubKeys(key_); }
  std::vector<Text> ValueNames() const { return kvtest::ValueNames(key_); }

  Key key_;
};

}  // namespace kvtest
