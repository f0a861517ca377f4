// Conformance of the calls on values.
#include "tests/platform/registry_support.h"

using kvtest::Key;
using kvtest::RegistryTest;
using kvtest::Text;

namespace {

using Bytes = std::vector<BYTE>;

class RegistryValues : public RegistryTest {
 protected:
  LSTATUS Set(LPCTSTR name, DWORD type, const Bytes& data) {
    return RegSetValueExW(key_, name, 0, type, data.data(), DWORD(data.size()));
  }
};

TEST_F(RegistryValues, TypeAndBytesComeBackAsTheyWere) {
  struct {
    const char* title;
    DWORD type;
    Bytes data;
  } const rows[] = {
      {"number", REG_DWORD, {0x2A, 0, 0, 0}},
      {"number of three bytes", REG_DWORD, {1, 2, 3}},
      {"text without a terminator, of an odd size", REG_SZ, {'a', 0, 0, 0, 'b', 0, 7}},
      {"no bytes", REG_BINARY, {}},
      {"highest type", 0xFFFFFFFF, {0xFF}},
      {"a megabyte", REG_BINARY, Bytes(1 << 20, 0xA5)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    EXPECT_EQ(Set(_T("Value"), row.type, row.data), ERROR_SUCCESS);
    DWORD type = 77;
    DWORD size = 77;
    EXPECT_EQ(RegQueryValueExW(key_, _T("Value"), nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, row.type);
    ASSERT_EQ(size, row.data.size());
    Bytes read(size + 1, 0xEE);
    EXPECT_EQ(RegQueryValueExW(key_, _T("Value"), nullptr, &type, read.data(), &size), ERROR_SUCCESS);
    EXPECT_EQ(type, row.type);
    EXPECT_EQ(size, row.data.size());
    EXPECT_EQ(read.back(), 0xEE) << "wrote past the data";
    read.pop_back();
    EXPECT_EQ(read, row.data);
  }
}

TEST_F(RegistryValues, TooSmallBufferReturnsTypeAndSize) {
  Set(_T("Value"), REG_BINARY, {1, 2, 3, 4, 5});
  for (const DWORD room : {0u, 4u}) {
    BYTE data[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    DWORD type = 0;
    DWORD size = room;
    EXPECT_EQ(RegQueryValueExW(key_, _T("Value"), nullptr, &type, data, &size), ERROR_MORE_DATA) << room;
    EXPECT_EQ(type, REG_BINARY);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(data[4], 0xEE) << "wrote past the buffer";
  }
  BYTE data[4] = {};
  EXPECT_EQ(RegQueryValueExW(key_, _T("Value"), nullptr, nullptr, data, nullptr), ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryValues, DefaultValueHasTheEmptyName) {
  EXPECT_EQ(Number(nullptr), -ERROR_FILE_NOT_FOUND) << "a key begins without a default value";
  EXPECT_EQ(SetNumber(nullptr, 7), ERROR_SUCCESS);
  EXPECT_EQ(Number(_T("")), 7);
  EXPECT_EQ(ValueNames(), std::vector<Text>{Text()});
  EXPECT_EQ(RegDeleteValueW(key_, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Number(nullptr), -ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteValueW(key_, nullptr), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryValues, NamesCompareWithoutCaseAndKeepTheirFirstForm) {
  const LPCTSTR rows[][2] = {
      {_T("\u00C4\u00D6\u00DC"), _T("\u00E4\u00F6\u00FC")},
      {_T("\u041C\u0438\u0440"), _T("\u043C\u0418\u0420")},
      {_T("a b\\c/d"), _T("A B\\C/D")},
  };
  for (const auto& [made, asked] : rows) {
    RegDeleteTreeW(key_, nullptr);
    EXPECT_EQ(SetNumber(made, 1), ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(asked, 2), ERROR_SUCCESS);
    EXPECT_EQ(Number(made), 2);
    EXPECT_EQ(ValueNames(), std::vector<Text>{made});
  }
  const Text long_name(16384, 'n');
  EXPECT_EQ(SetNumber(long_name.c_str(), 1), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(SetNumber(long_name.c_str() + 1, 1), ERROR_SUCCESS);
}

TEST_F(RegistryValues, KeepsNamesThatAreNoCharacters) {
  const TCHAR name[] = {0xD800, 'x', 0xDC00, 0xFFFF, 0xD83D, 0xDE00, 0};
  EXPECT_EQ(SetNumber(name, 5), ERROR_SUCCESS);
  EXPECT_EQ(Number(name), 5);
  EXPECT_EQ(ValueNames(), std::vector<Text>{name});
}

TEST_F(RegistryValues, EnumerationGivesDataOrItsSize) {
  Set(_T("Name"), REG_BINARY, {1, 2, 3});
  TCHAR name[16];
  BYTE data[3] = {};
  DWORD units = 16, type = 0, size = 3;
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(Text(name, units), _T("Name"));
  EXPECT_EQ(type, REG_BINARY);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(data[2], 3);
  units = 16, size = 2;
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, &type, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 3u);
  units = 4;  // the terminator has no room
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
  units = 5;
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
}

}  // namespace
