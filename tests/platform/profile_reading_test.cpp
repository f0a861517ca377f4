// Profile files: what their lines say, in every form that a user or another program may have given them.
#include "tests/platform/profile_support.h"

namespace {

using namespace std::string_literals;
using kvtest::Utf16;
using ProfileReading = kvtest::ProfileTest;
using ProfileSearch = kvtest::ProfileTest;

constexpr LPCWSTR kNone = kvtest::kNoValue, kLines = _T("(all lines of the section)");

TEST_F(ProfileSearch, FindsValuesInLinesOfEveryForm) {
  ExpectFound({// Case, blanks, and arguments that are trimmed.
               {"[Mill]\nFeed=1\n", _T("mILL"), _T("FEED"), _T("1")},
               {" \t\v[ \tA\v ] \n\t k \v=\t 1 2\v \n", _T("A"), _T("k"), _T("1 2")},
               {"[A]\nk=1\n", _T("  A "), _T(" k  "), _T("1")},
               // Quotes: one pair around the whole.
               {"[A]\nk=\" 1 \"\n", _T("A"), _T("k"), _T(" 1 ")},
               {"[A]\nk= ' 1 ' \n", _T("A"), _T("k"), _T(" 1 ")},
               {"[A]\nk=\"'1'\"\n", _T("A"), _T("k"), _T("'1'")},
               {"[A]\nk=\"1'\n", _T("A"), _T("k"), _T("\"1'")},
               // Comments.
               {"[A]\n;k=1\nk=2\n", _T("A"), _T("k"), _T("2")},
               {";[A]\nk=1\n", _T("A"), _T("k"), kNone},
               // Duplicates.
               {"[A]\nk=1\nK=2\n", _T("A"), _T("k"), _T("1")},
               {"[A]\nk=1\n[a]\nk=2\nm=3\n", _T("A"), _T("m"), kNone},
               // Headers: with text after their bracket, and none before a key.
               {"[A] k=0\nk=1\n", _T("A"), _T("k"), _T("1")},
               {"k=1\n[A]\n", _T("A"), _T("k"), kNone},
               // Lines and their ends.
               {"[A]\rk=1\rl=2\r\nm=3\nn=4", _T("A"), _T("l"), _T("2")}});
}

// Names compare as the platform compares them, unit by unit.
TEST_F(ProfileSearch, ComparesNamesInUtf16) {
  ExpectFound({{"\xFF\xFE" + Utf16(_T("[Ö]\nk='€'\r\n")), _T("ö"), _T("K"), _T("€")},
               {"\xFF\xFE" + Utf16(_T("[ж]\nК=1\r\n")), _T("Ж"), _T("к"), _T("1")}});
}

// Which letters are no pair: text_test.cpp.
TEST_F(ProfileSearch, KeepsLettersApartThatAreNoPair) {
  ExpectFound({{"\xFF\xFE" + Utf16(_T("[ſ]\nı=1\r\n")), _T("S"), _T("ı"), kNone},
               {"\xFF\xFE" + Utf16(_T("[A]\nı=1\r\n")), _T("a"), _T("I"), kNone}});
}

TEST_F(ProfileSearch, EmptyNamesAreNamesAndLinesWithoutASignAreNone) {
  ExpectFound({{"[]\r\nk=1\r\n", _T(""), _T("k"), _T("1")},
               {"[A]\r\n=1\r\n", _T("A"), _T(""), _T("1")},
               {"[A]\nk\n=\nk==1=\n", _T("A"), _T("k"), _T("=1=")}});
}

TEST_F(ProfileReading, ListsHaveDuplicatesAndNoComments) {
  Put("x=0\n[A]\n;c=1\n k = ' 1' \n no \nK=2\n#d=\n[ b ]\n=3\n[a]\nk=4\n[]\n\r[B] x");
  EXPECT_EQ(List(nullptr), _T("A|b|a|B|"));
  EXPECT_EQ(List(_T("a")), _T("k|K|#d|"));
  EXPECT_EQ(Lines(_T("a")), _T("k=' 1'|no|K=2|#d=|"));
  EXPECT_EQ(Lines(_T("b")), _T("=3|"));
  EXPECT_EQ(Lines(_T("c")), _T(""));
}

TEST_F(ProfileReading, BuffersAreFilledToTheLastUnitAndNoFurther) {
  Put("[Sec]\nkey=value\nb=2\n[T]\n");
  const struct {
    LPCWSTR section, key, fallback;
    DWORD units;
    Text wanted;  // all that was written
    DWORD result;
  } rows[] = {{_T("sec"), _T("key"), _T("d"), 6, _T("value|"), 5},
              {_T("sec"), _T("key"), _T("d"), 5, _T("valu|"), 4},
              {_T("sec"), _T("key"), _T("d"), 1, _T("|"), 0},
              {_T("sec"), _T("key"), _T("d"), 0, _T(""), 0},
              {_T("sec"), _T("x"), _T("  a b  "), 9, _T("  a b|"), 5},
              // A list that fills the buffer counts as cut.
              {_T("sec"), nullptr, _T("d"), 8, _T("key|b||"), 6},
              {_T("sec"), nullptr, _T("d"), 7, _T("key|b||"), 5},
              {_T("sec"), nullptr, _T("d"), 6, _T("key||"), 4},  // both NULs, though the last key is empty then
              {_T("sec"), nullptr, _T("d"), 1, _T("|"), 0},
              {nullptr, _T("k"), _T("d"), 8, _T("Sec|T||"), 6},
              {nullptr, _T("k"), _T("d"), 7, _T("Sec|T||"), 5},
              {nullptr, _T("k"), _T("d"), 6, _T("Sec||"), 4},
              {_T("sec"), kLines, nullptr, 16, _T("key=value|b=2||"), 14},
              {_T("sec"), kLines, nullptr, 15, _T("key=value|b=2||"), 13},
              {_T("sec"), kLines, nullptr, 14, _T("key=value|b=||"), 12}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(row.wanted) << " of " << row.units);
    Text buffer(20, _T('~'));
    TCHAR* const out = buffer.data();
    EXPECT_EQ(row.key == kLines ? GetPrivateProfileSectionW(row.section, out, row.units, Path())
                                : GetPrivateProfileStringW(row.section, row.key, row.fallback, out, row.units, Path()),
              row.result);
    EXPECT_TRUE(Shown(buffer).starts_with(row.wanted)) << testing::PrintToString(Shown(buffer));
    const std::size_t room = std::max(row.wanted.size(), std::size_t(row.units));
    EXPECT_EQ(Shown(buffer).substr(room), Text(20 - room, _T('~')));
  }
  Text names(8, _T('~'));
  EXPECT_EQ(GetPrivateProfileSectionNamesW(names.data(), 8, Path()), 6U);
  EXPECT_EQ(Shown(names), _T("Sec|T||~"));
  TCHAR one = _T('~');
  EXPECT_EQ(GetPrivateProfileStringW(_T("sec"), _T("x"), nullptr, &one, 1, Path()), 0U);
  EXPECT_EQ(one, _T('\0')) << "a null default is empty";
}

TEST_F(ProfileReading, FoundSectionsClearTheStatus) {
  Put("[A]\nk=1\n[B]\n");
  TCHAR buffer[20];
  const std::pair<LPCWSTR, DWORD> rows[] = {{_T("a"), 4}, {_T("b"), 0}};
  for (const auto& [section, result] : rows) {
    SetLastError(77);
    EXPECT_EQ(GetPrivateProfileSectionW(section, buffer, 20, Path()), result);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_SUCCESS)) << testing::PrintToString(Text(section));
  }
  SetLastError(77);
  EXPECT_EQ(StatusOf(GetPrivateProfileSectionW(_T("a"), nullptr, 0, Path()) != 0U), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf(GetPrivateProfileSectionW(nullptr, buffer, 20, Path()) != 0U), ERROR_INVALID_PARAMETER);
}

TEST_F(ProfileReading, WithoutAPathThereIsNoFile) {
  TCHAR buffer[9];
  SetLastError(77);
  EXPECT_EQ(StatusOf(GetPrivateProfileSectionW(_T("A"), buffer, 9, nullptr) != 0U), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetPrivateProfileStringW(_T("A"), _T("k"), _T("d "), buffer, 9, nullptr), 1U);
}

TEST_F(ProfileReading, WhatCannotBeReadGivesTheDefaultAndTheReason) {
  folder.Write("plain", "x");
  const std::pair<const char*, LONG> rows[] = {
      {"none.ini", ERROR_FILE_NOT_FOUND}, {"none/f.ini", ERROR_PATH_NOT_FOUND}, {"plain/f.ini", ERROR_PATH_NOT_FOUND}};
  for (const auto& [name, status] : rows) {
    SCOPED_TRACE(name);
    const Text at = ProductPathFromSystem((folder.Path() / name).string());
    TCHAR buffer[9];
    EXPECT_EQ(StatusOf(GetPrivateProfileStringW(_T("A"), _T("k"), _T("d "), buffer, 9, at.c_str()) != 1U), status);
    EXPECT_EQ(buffer, Text(_T("d")));
  }
}

}  // namespace
