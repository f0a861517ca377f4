// The registry's keys and values beyond what every system promises: their order, handles that are never used again,
// and text as it was given.
#include "tests/platform/registry_support.h"

using kvtest::Key;
using LinuxRegistryKeys = kvtest::RegistryTest;
using kvtest::Text;

namespace {

TEST_F(LinuxRegistryKeys, SubKeysComeInOrderOfTheirNamesWithoutCase) {
  for (const LPCTSTR name : {_T("b"), _T("C"), _T("a_"), _T("A"), _T("ab"), _T("_"), _T("10"), _T("9"), _T("A\\x")})
    ASSERT_EQ(Create(name), ERROR_SUCCESS);
  EXPECT_EQ(SubKeys(), (std::vector<Text>{_T("10"), _T("9"), _T("A"), _T("ab"), _T("a_"), _T("b"), _T("C"), _T("_")}));
}

TEST_F(LinuxRegistryKeys, ClosedHandleIsInvalid) {
  HKEY opened = nullptr;
  ASSERT_EQ(RegOpenKeyExW(key_, nullptr, 0, KEY_READ, &opened), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(opened), ERROR_SUCCESS);
  Key other;
  ASSERT_EQ(RegOpenKeyExW(key_, nullptr, 0, KEY_READ, &other), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(opened), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegQueryValueExW(opened, _T("V"), nullptr, nullptr, nullptr, nullptr), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(nullptr), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

// Readers cope with a missing terminator: tests/settings/registry_test.cpp.
TEST_F(LinuxRegistryKeys, TextIsStoredWithoutATerminatorOfItsOwn) {
  for (const std::string& bytes : {kvtest::Wide(_T("ab")), std::string("a\0\7", 3), std::string()}) {
    EXPECT_EQ(kvtest::Set(key_, _T("V"), {REG_SZ, bytes}), ERROR_SUCCESS);
    EXPECT_EQ(kvtest::Get(key_, nullptr, _T("V")).bytes, bytes);
  }
}

}  // namespace
