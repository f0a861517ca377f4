// Profile files: what their lines say, in every form that a user or another program may have given them.
#include "tests/platform/profile_support.h"

namespace {

using namespace std::string_literals;
using kvtest::Utf16;
using ProfileReading = kvtest::ProfileTest;

constexpr LPCWSTR kNone = _T("(none)");
constexpr LPCWSTR kLines = _T("(all lines of the section)");

TEST_F(ProfileReading, FindsValuesInLinesOfEveryForm) {
  const struct {
    std::string bytes;
    LPCWSTR section;
    LPCWSTR key;
    LPCWSTR wanted;
  } rows[] = {
      // Case, blanks, and which arguments are trimmed.
      {"[Mill]\nFeed=1\n", _T("mILL"), _T("FEED"), _T("1")},
      {"[\xC3\x96l]\n\xC3\x84=1\n", _T("öL"), _T("ä"), _T("1")},
      {" \t\v[ \tA\v ] \n\t k \v=\t 1 2\v \n", _T("A"), _T("k"), _T("1 2")},
      {"[A]\nk=1\n", _T("  A "), _T(" k  "), _T("1")},
      {"[A]\nk=1\n", _T("\tA"), _T("k"), kNone},
      // Quotes: one pair around the whole.
      {"[A]\nk=\" 1 \"\n", _T("A"), _T("k"), _T(" 1 ")},
      {"[A]\nk= ' 1 ' \n", _T("A"), _T("k"), _T(" 1 ")},
      {"[A]\nk=\"'1'\"\n", _T("A"), _T("k"), _T("'1'")},
      {"[A]\nk=\"1'\n", _T("A"), _T("k"), _T("\"1'")},
      // Comments.
      {"[A]\n;k=1\nk=2\n", _T("A"), _T("k"), _T("2")},
      {"[A]\n \t;k=1\n", _T("A"), _T(";k"), kNone},
      {";[A]\nk=1\n", _T("A"), _T("k"), kNone},
      // Duplicates.
      {"[A]\nk=1\nK=2\n", _T("A"), _T("k"), _T("1")},
      {"[A]\nk=1\n[a]\nk=2\nm=3\n", _T("A"), _T("m"), kNone},
      // Headers: without and behind their bracket, ahead of any.
      {"[A\nk=1\n", _T("A"), _T("k"), _T("1")},
      {"[A] k=0\nk=1\n", _T("A"), _T("k"), _T("1")},
      {"k=1\n[A]\n", _T("A"), _T("k"), kNone},
      {"[]\n=1\n", _T(""), _T(""), _T("1")},
      // Lines and their ends.
      {"[A]\rk=1\rl=2\r\nm=3\nn=4", _T("A"), _T("l"), _T("2")},
      {"[A]\nk\n=\nk==1=\n", _T("A"), _T("k"), _T("=1=")},
      // Encodings.
      {"\xEF\xBB\xBF[A]\nk=\xE2\x82\xAC\n", _T("A"), _T("k"), _T("€")},
      {"[A]\nk=a\xFF\xE2\x82\n", _T("A"), _T("k"), _T("a\u00FF\u00E2\u201A")},  // windows-1252
      {"[\xD6l]\n\xC4=\x80\n", _T("öL"), _T("ä"), _T("€")},
      {"\xEF\xBB\xBF[A]\nk=a\xFF\xE2\x82\n", _T("A"), _T("k"), _T("a\xFFFD\xFFFD")},
      {"[\xC3\x96]\nk=\xE4\n", _T("ö"), _T("k"), _T("\xFFFD")},  // two encodings in one file
      {"\xFF\xFE" + Utf16(u"[Ö]\nk='€'\r\n"), _T("ö"), _T("K"), _T("€")},
      {"\xFF\xFE" + Utf16(u"[A]\nk=1") + "\x41", _T("A"), _T("k"), _T("1")},
      {Utf16(u"[A]\nk=1\n"), _T("A"), _T("k"), kNone},
      {"\xFE\xFF\0[\0A\0]\0\n\0k\0=\0001"s, _T("A"), _T("k"), kNone},
      // NULs end what is read of a line.
      {"[A]\nk=1\0002\nl=3\n"s, _T("A"), _T("k"), _T("1")},
      {"[A]\nk=1\0002\nl=3\n"s, _T("A"), _T("l"), _T("3")},
      {"[A]\nk\0=1\n\0[B]\n"s, _T("A"), _T("k"), kNone},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    Put(row.bytes);
    EXPECT_EQ(Value(row.section, row.key), row.wanted);
  }
  Put("\xFF\xFE" + Utf16(u"[A]\nk=") + "\x00\xD8"s);
  EXPECT_EQ(Value(_T("A"), _T("k")), std::u16string(1, 0xD800)) << "a lone surrogate";
}

TEST_F(ProfileReading, ListsHaveDuplicatesAndNoComments) {
  Put("x=0\n[A]\n;c=1\n k = ' 1' \nno\nK=2\n=3\n#d=\n[ b \n[a]\nk=4\n[]\n\r[B] x");
  EXPECT_EQ(List(nullptr), u"A|b|a|B|");
  EXPECT_EQ(List(_T("a")), u"k|K|#d|");
  EXPECT_EQ(Lines(_T("a")), u"k=' 1'|K=2|=3|#d=|");
  EXPECT_EQ(List(_T("b")), u"");
  EXPECT_EQ(Lines(_T("c")), u"");
  Put("\xFF\xFE" + Utf16(u"[Ö]\nä=1\nÄ=2\n"));
  EXPECT_EQ(List(nullptr), u"Ö|");
  EXPECT_EQ(Lines(_T("ö")), u"ä=1|Ä=2|");
}

TEST_F(ProfileReading, BuffersAreFilledToTheLastUnitAndNoFurther) {
  Put("[Sec]\nkey=value\nb=2\n[T]\n");
  constexpr DWORD kCut = ERROR_MORE_DATA;
  const struct {
    LPCWSTR section, key, fallback;
    DWORD units;
    std::u16string wanted;  // all that was written
    DWORD result;
    DWORD status;
  } rows[] = {
      {_T("sec"), _T("key"), _T("d"), 5, u"valu|", 4, kCut},
      {_T("sec"), _T("key"), _T("d"), 1, u"|", 0, kCut},
      {_T("sec"), _T("key"), _T("d"), 0, u"", 0, 0},
      {_T("sec"), _T("x"), _T("  a b  "), 9, u"  a b|", 5, 2},
      {_T("sec"), nullptr, _T("d"), 7, u"key|b||", 6, 0},
      {_T("sec"), nullptr, _T("d"), 6, u"key|||", 4, kCut},
      {_T("sec"), nullptr, _T("d"), 2, u"||", 0, kCut},
      {_T("sec"), nullptr, _T("d"), 1, u"|", 0, kCut},
      {nullptr, _T("k"), _T("d"), 6, u"Sec|||", 4, kCut},
      {_T("sec"), kLines, nullptr, 15, u"key=value|b=2||", 14, 0},
      {_T("sec"), kLines, nullptr, 14, u"key=value|b=||", 12, kCut},
      {_T("none"), kLines, nullptr, 1, u"|", 0, 2},
  };
  for (const auto& row : rows) {
    std::u16string buffer(20, u'~');
    TCHAR* const out = buffer.data();
    SetLastError(0);
    EXPECT_EQ(row.key == kLines ? GetPrivateProfileSectionW(row.section, out, row.units, Path())
                                : GetPrivateProfileStringW(row.section, row.key, row.fallback, out, row.units, Path()),
              row.result);
    EXPECT_EQ(GetLastError(), row.status);
    EXPECT_EQ(Shown(buffer), row.wanted + std::u16string(20 - row.wanted.size(), u'~'));
  }
  std::u16string names(8, u'~');
  EXPECT_EQ(GetPrivateProfileSectionNamesW(names.data(), 7, Path()), 6U);
  EXPECT_EQ(Shown(names), u"Sec|T||~");
  TCHAR one = u'~';
  EXPECT_EQ(GetPrivateProfileStringW(_T("sec"), _T("x"), nullptr, &one, 1, Path()), 0U);
  EXPECT_EQ(one, u'\0') << "a null default is empty";
}

TEST_F(ProfileReading, WhatCannotBeReadGivesTheDefaultAndTheReason) {
  folder.Write("plain", "x");
  const struct {
    const char* name;
    DWORD status;
  } rows[] = {
      {"none.ini", ERROR_FILE_NOT_FOUND}, {"none/f.ini", ERROR_PATH_NOT_FOUND}, {"plain/f.ini", ERROR_PATH_NOT_FOUND},
      {"", ERROR_ACCESS_DENIED},          {nullptr, ERROR_FILE_NOT_FOUND},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name ? row.name : "(null)");
    const std::u16string at = row.name ? ProductPathFromSystem((folder.Path() / row.name).string()) : u"";
    TCHAR buffer[9];
    SetLastError(0);
    EXPECT_EQ(GetPrivateProfileStringW(_T("A"), _T("k"), _T("d "), buffer, 9, row.name ? at.c_str() : nullptr), 1U);
    EXPECT_EQ(GetLastError(), row.status);
    EXPECT_EQ(buffer, std::u16string(u"d"));
  }
}

TEST_F(ProfileReading, HugeLinesAndFilesAreBounded) {
  const std::string wide(30 << 20, 'x');
  Put("[A]\nk=" + wide + "\nl=2\n");
  EXPECT_EQ(Value(_T("A"), _T("l")), u"2");
  EXPECT_EQ(Value(_T("A"), _T("k")), std::u16string(999, u'x'));
  std::filesystem::resize_file(folder.Path() / "f.ini", std::uintmax_t(5) << 30);  // sparse, one line without an end
  SetLastError(0);
  EXPECT_EQ(Value(_T("A"), _T("l")), kNone);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_TOO_LARGE));
  EXPECT_FALSE(WritePrivateProfileStringW(_T("A"), _T("l"), _T("3"), Path()));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_TOO_LARGE));
  EXPECT_EQ(std::filesystem::file_size(folder.Path() / "f.ini"), std::uintmax_t(5) << 30);
}

}  // namespace
