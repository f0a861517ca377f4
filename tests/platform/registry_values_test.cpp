// Conformance of the calls on values.
#include "tests/platform/registry_support.h"

using namespace std::string_literals;
using kvtest::Stored;
using kvtest::Text;
using RegistryValues = kvtest::RegistryTest;

namespace {

TEST_F(RegistryValues, TypeAndBytesComeBackAsTheyWere) {
  const Stored rows[] = {
      {REG_DWORD, kvtest::Raw(42)}, {REG_SZ, "a\0\0\0b\0\0\0"s}, {REG_BINARY, ""}, {0xFFFFFFFF, "\xFF"}};
  for (const Stored& row : rows) {
    EXPECT_EQ(kvtest::Set(key_, _T("Value"), row), ERROR_SUCCESS);
    EXPECT_EQ(kvtest::Get(key_, nullptr, _T("Value")), row);
  }
}

TEST_F(RegistryValues, DataThatIsMissingIsRefused) {
  for (const DWORD type : {REG_SZ, REG_DWORD}) {
    EXPECT_EQ(RegSetValueExW(key_, _T("V"), 0, type, nullptr, 4), ERROR_NOACCESS);
    EXPECT_EQ(RegSetValueExW(key_, _T("V"), 0, type, nullptr, 0), ERROR_SUCCESS);
  }
}

TEST_F(RegistryValues, TooSmallBufferReturnsTypeAndSize) {
  kvtest::Set(key_, _T("Value"), {REG_BINARY, "12345"});
  for (const DWORD room : {0u, 4u}) {
    BYTE data[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    DWORD type = 0, size = room;
    EXPECT_EQ(RegQueryValueExW(key_, _T("Value"), nullptr, &type, data, &size), ERROR_MORE_DATA) << room;
    EXPECT_EQ(type, DWORD(REG_BINARY));
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(data[4], 0xEE) << "wrote past the buffer";
    size = 0;
    EXPECT_EQ(RegQueryValueExW(key_, _T("Value"), nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 5u);
  }
}

TEST_F(RegistryValues, SeveralValuesAreReadIntoOneBuffer) {
  kvtest::Set(key_, _T("A"), {REG_BINARY, "123"});
  kvtest::Set(key_, _T("B"), {REG_NONE, ""});
  kvtest::Set(key_, _T("C"), {REG_DWORD, "4567"});
  TCHAR a[] = _T("a"), b[] = _T("B"), c[] = _T("c"), none[] = _T("D");
  VALENTW values[] = {{a, 0, 0, 0}, {b, 0, 0, 0}, {c, 0, 0, 0}, {a, 0, 0, 0}};
  BYTE data[11];
  const auto read = [&](DWORD room) {
    std::fill(std::begin(data), std::end(data), BYTE('-'));
    const LSTATUS status = RegQueryMultipleValuesW(key_, values, 4, reinterpret_cast<LPWSTR>(data), &room);
    return std::pair(status, room);
  };
  EXPECT_EQ(read(10), std::pair(LSTATUS(ERROR_SUCCESS), DWORD(10)));
  EXPECT_EQ(std::string(std::begin(data), std::end(data)), "1234567123-");
  EXPECT_EQ(values[2].ve_valueptr, reinterpret_cast<std::uintptr_t>(data + 3));
  EXPECT_EQ(std::pair(values[2].ve_valuelen, values[2].ve_type), std::pair(DWORD(4), DWORD(REG_DWORD)));
  EXPECT_EQ(read(9), std::pair(LSTATUS(ERROR_MORE_DATA), DWORD(10)));
  EXPECT_EQ(data[9], '-') << "wrote past the buffer";
  values[3].ve_valuename = none;
  EXPECT_EQ(read(10).first, ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryValues, NamesCompareWithoutCaseAndKeepTheirFirstForm) {
  const TCHAR no_characters[] = {0xD800, 'x', 0xDC00, 0xFFFF, 0xD83D, 0xDE00, 0};
  const LPCTSTR rows[][2] = {{no_characters, no_characters},
                             {_T(""), nullptr},  // the default value
                             {_T("\u00C4\u00D6\u00DC"), _T("\u00E4\u00F6\u00FC")},
                             {_T("\u041C\u0438\u0440"), _T("\u043C\u0418\u0420")},
                             {_T("a b\\c/d"), _T("A B\\C/D")}};
  for (const auto& [made, asked] : rows) {
    EXPECT_EQ(Number(made), -ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(SetNumber(made, 1), ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(asked, 2), ERROR_SUCCESS);
    EXPECT_EQ(Number(made), 2);
    EXPECT_EQ(ValueNames(), std::vector<Text>{made});
    EXPECT_EQ(RegDeleteValueW(key_, asked), ERROR_SUCCESS);
  }
  // Letters that only a language or full case folding takes for the same, and a surrogate pair.
  const LPCTSTR others[][2] = {{_T("ſ"), _T("S")}, {_T("ı"), _T("I")}, {_T("İ"), _T("i")},
                               {_T("ς"), _T("Σ")}, {_T("ß"), _T("ẞ")}, {_T("𐐀"), _T("𐐨")}};
  for (const auto& [made, asked] : others) {
    EXPECT_EQ(SetNumber(made, 1), ERROR_SUCCESS);
    EXPECT_EQ(Number(asked), -ERROR_FILE_NOT_FOUND) << testing::PrintToString(Text(asked));
  }
  EXPECT_EQ(Create(_T("ſ")), ERROR_SUCCESS);
  EXPECT_EQ(Open(_T("s")), ERROR_FILE_NOT_FOUND);
  const Text long_name(16384, 'n');
  EXPECT_EQ(SetNumber(long_name.c_str(), 1), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(SetNumber(long_name.c_str() + 1, 1), ERROR_SUCCESS);
}

TEST_F(RegistryValues, EnumerationGivesDataOrItsSize) {
  kvtest::Set(key_, _T("Name"), {REG_BINARY, "123"});
  TCHAR name[16];
  BYTE data[3] = {};
  DWORD units = 16, type = 0, size = 3;
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(Text(name, units), _T("Name"));
  EXPECT_EQ(std::tuple(type, size, data[2]), std::tuple(DWORD(REG_BINARY), 3u, BYTE('3')));
  units = 16, size = 2;
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, &type, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 3u);
  units = 4;  // the terminator has no room
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
  units = 5;
  EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
}

}  // namespace
