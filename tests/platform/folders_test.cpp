// Walking folders, and paths taken apart: the calls as their descriptions have them.
#include "tests/platform/files_support.h"

namespace {

using Folders = kvtest::FilesTest;

TEST_F(Folders, StarsAndNamesAreFoundWithoutCase) {
  for (const char* name : {"a.txt", "B.TXT", "ab", "ab.c.txt", "abc", "x.htm"}) folder.Write(name, "");
  const std::pair<const char*, const char*> rows[] = {
      {"*", ". .. B.TXT a.txt ab ab.c.txt abc x.htm "},
      {"*.*", ". .. B.TXT a.txt ab ab.c.txt abc x.htm "},
      {"*.txt", "B.TXT a.txt ab.c.txt "},
      {"ab*.*", "ab ab.c.txt abc "},
      {"*B*", "B.TXT ab ab.c.txt abc "},
      {"A.TXT", "a.txt "},
      {"q", "error 2"},
      {"", "error 2"},  // the path ends in a backslash
      {"none/*", "error 3"},
      {"*/ab", "error 123"},
  };
  for (const auto& [pattern, names] : rows) EXPECT_EQ(Found(pattern), names) << pattern;
}

TEST_F(Folders, QuestionMarksAndPointsAtTheEndFollowTheOldRules) {
  for (const char* name : {"a.txt", "B.TXT", "ab", "ab.c.txt", "abc", "x.htm", "x.html"}) folder.Write(name, "");
  const std::pair<const char*, const char*> rows[] = {
      {"a??", "ab abc "}, {"???.txt", "B.TXT a.txt "}, {"x.htm?", "x.htm x.html "}, {"ab/*", "error 267"}};
  for (const auto& [pattern, names] : rows) EXPECT_EQ(Found(pattern), names) << pattern;
}

TEST_F(Folders, PatternOfManyStarsTakesNoTime) {
  folder.Write(std::string(200, 'a') + 'b', "");
  std::string pattern;
  for (int i = 0; i < 100; ++i) pattern += "*a";
  EXPECT_EQ(Found(pattern), "error 2");
}

TEST(Paths, FullPathResolvesPointsInTheText) {
  const std::pair<const TCHAR*, Text> rows[] = {
      {_T("C:\\a\\..\\b\\.\\c.txt"), _T("C:\\b\\c.txt")},
      {_T("C:/a/b/"), _T("C:\\a\\b\\")},
      {_T("C:\\..\\..\\x"), _T("C:\\x")},
      {_T("C:\\a\\b\\.."), _T("C:\\a")},
      {_T("C:\\a\\b\\..\\"), _T("C:\\a\\")},
      {_T("C:\\a\\."), _T("C:\\a")},
      {_T("C:\\a\\.."), _T("C:\\")},
      {_T("C:\\a.\\b... . "), _T("C:\\a\\b")},
      {_T("C:\\a\\ ..  "), _T("C:\\a\\")},
      {_T("\\\\server\\share\\..\\x"), _T("\\\\server\\share\\x")},
  };
  TCHAR buffer[300];
  for (const auto& [path, wanted] : rows) {
    EXPECT_EQ(GetFullPathNameW(path, 300, buffer, nullptr), wanted.size());
    EXPECT_EQ(buffer, wanted);
  }
  LPTSTR part = nullptr;
  EXPECT_EQ(GetFullPathNameW(_T("C:\\ab\\cd"), 8, buffer, &part), 9U);
  EXPECT_EQ(GetFullPathNameW(_T("C:\\a\\bc"), 8, buffer, &part), 7U);
  EXPECT_EQ(Text(part), _T("bc"));
}

}  // namespace
