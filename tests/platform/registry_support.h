// What the registry's tests share: a key of their own that is gone afterwards, and readable calls.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace kvtest {

using Text = std::basic_string<TCHAR>;

// An open key. Closed by the destructor.
class Key {
 public:
  Key() = default;
  ~Key() { Close(); }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  operator HKEY() const { return key_; }
  PHKEY operator&() { return &key_; }
  void Close() {
    if (key_) RegCloseKey(key_);
    key_ = nullptr;
  }

 private:
  HKEY key_ = nullptr;
};

// Each test gets an empty key of the user's hive, opened with all rights.
class RegistryTest : public testing::Test {
 protected:
  static constexpr LPCTSTR kPath = _T("Software\\KvConformance\\Test");

  void SetUp() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvConformance"));
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr), 0);
  }
  void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvConformance")); }

  LSTATUS Create(LPCTSTR path, HKEY under = nullptr) {
    Key made;
    return RegCreateKeyExW(under ? under : key_, path, 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr);
  }
  LSTATUS Open(LPCTSTR path, REGSAM rights = KEY_READ) {
    Key opened;
    return RegOpenKeyExW(key_, path, 0, rights, &opened);
  }
  LSTATUS SetNumber(LPCTSTR name, DWORD number) {
    return RegSetValueExW(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
  }
  // The number, or the negative status.
  LONGLONG Number(LPCTSTR name) {
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS status = RegQueryValueExW(key_, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
    return status == ERROR_SUCCESS ? LONGLONG(number) : -LONGLONG(status);
  }
  std::vector<Text> SubKeys() {
    std::vector<Text> names;
    TCHAR name[256];
    for (DWORD i = 0, units = 256;
         RegEnumKeyExW(key_, i, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, units = 256) {
      names.emplace_back(name, units);
    }
    return names;
  }
  std::vector<Text> ValueNames() {
    std::vector<Text> names;
    TCHAR name[256];
    for (DWORD i = 0, units = 256;
         RegEnumValueW(key_, i, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, units = 256) {
      names.emplace_back(name, units);
    }
    return names;
  }

  Key key_;
};

}  // namespace kvtest
