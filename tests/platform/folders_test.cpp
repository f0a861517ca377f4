// Walking folders, and paths taken apart: the calls as their descriptions have them.
#include "platform/folders.h"

#include <gtest/gtest.h>

#include "platform/handles.h"
#include "tests/scratch.h"

namespace {

namespace fs = std::filesystem;

class Folders : public testing::Test {
 protected:
  std::u16string At(const std::string& name) const { return ProductPathFromSystem((folder.Path() / name).string()); }

  // The names that a search returns, each followed by a blank; "error N" if it finds nothing.
  std::string Found(const std::string& pattern) const {
    WIN32_FIND_DATAW facts;
    const HANDLE search = FindFirstFileW(At(pattern).c_str(), &facts);
    if (search == INVALID_HANDLE_VALUE) return "error " + std::to_string(GetLastError());
    std::string names;
    do {
      names += SystemPathFromProduct(facts.cFileName) + " ";
    } while (FindNextFileW(search, &facts));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NO_MORE_FILES));
    EXPECT_TRUE(FindClose(search));
    return names;
  }

  kvtest::ScratchFolder folder;
};

TEST_F(Folders, PatternsFollowThePlatformsRules) {
  for (const char* name : {"a.txt", "B.TXT", "ab", "ab.c.txt", "abc", "x.htm", "x.html", "z."}) folder.Write(name, "");
  folder.Write("\xFF\xFE", "");
  for (const char* name : {"back\\slash", "..\\up"}) folder.Write(name, "not in the product's form");
  const std::pair<const char*, const char*> rows[] = {
      {"*", ". .. a.txt ab ab.c.txt abc B.TXT x.htm x.html z. \xFF\xFE "},
      {"*.*", ". .. a.txt ab ab.c.txt abc B.TXT x.htm x.html z. \xFF\xFE "},
      {"*.txt", "a.txt ab.c.txt B.TXT "},
      {"*.", "ab abc \xFF\xFE "},
      {"??", "ab \xFF\xFE "},
      {"a??", "ab abc "},
      {"???.txt", "a.txt B.TXT "},
      {"ab*.*", "ab ab.c.txt abc "},
      {"x.htm?", "x.htm x.html "},
      {"*B*", "ab ab.c.txt abc B.TXT "},
      {"A.TXT", "a.txt "},
      {"q", "error 2"},
      {"", "error 2"},  // the path ends in a backslash
      {"none/*", "error 3"},
      {"ab/*", "error 267"},
      {"*/ab", "error 123"},
  };
  for (const auto& [pattern, names] : rows) EXPECT_EQ(Found(pattern), names) << pattern;
}

TEST_F(Folders, PatternOfManyStarsTakesNoTime) {
  folder.Write(std::string(200, 'a') + 'b', "");
  std::string pattern;
  for (int i = 0; i < 100; ++i) pattern += "*a";
  EXPECT_EQ(Found(pattern), "error 2");
}

TEST_F(Folders, LinksHaveTheirMarkAndTheFactsOfTheTarget) {
  folder.Write("file", "12345");
  fs::create_directory(folder.Path() / "sub");
  for (const char* target : {"file", "sub", "nothing"})
    fs::create_symlink(target, folder.Path() / ("to_" + std::string(target)));
  const struct {
    const char* name;
    DWORD attributes, tag, bytes;
  } rows[] = {
      {"file", FILE_ATTRIBUTE_NORMAL, 0, 5},
      {"sub", FILE_ATTRIBUTE_DIRECTORY, 0, 0},
      {"to_file", FILE_ATTRIBUTE_REPARSE_POINT, IO_REPARSE_TAG_SYMLINK, 5},
      {"to_sub", FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY, IO_REPARSE_TAG_SYMLINK, 0},
  };
  WIN32_FIND_DATAW facts = {};
  for (const auto& row : rows) {
    EXPECT_TRUE(FindClose(FindFirstFileW(At(row.name).c_str(), &facts))) << row.name;
    EXPECT_EQ(facts.dwFileAttributes, row.attributes) << row.name;
    EXPECT_EQ(facts.dwReserved0, row.tag) << row.name;
    EXPECT_EQ(facts.nFileSizeLow, row.bytes) << row.name;
  }
  EXPECT_TRUE(FindClose(FindFirstFileW(At("to_nothing").c_str(), &facts)));
  EXPECT_EQ(facts.dwFileAttributes, FILE_ATTRIBUTE_REPARSE_POINT);
}

TEST_F(Folders, EntriesThatDisappearDuringAWalkAreSkipped) {
  for (const char* name : {"a", "b", "c"}) folder.Write(name, "");
  WIN32_FIND_DATAW facts;
  const HANDLE search = FindFirstFileW(At("?").c_str(), &facts);
  fs::remove(folder.Path() / "b");
  folder.Write("bb", "");
  std::u16string names = facts.cFileName;
  while (FindNextFileW(search, &facts)) names += facts.cFileName;
  EXPECT_TRUE(FindClose(search));
  EXPECT_EQ(names, u"ac");
}

TEST(Paths, PartsThatAreTooLongAreCut) {
  TCHAR name[_MAX_FNAME], extension[_MAX_EXT];
  _wsplitpath(std::u16string(500, 'n').c_str(), nullptr, nullptr, name, extension);
  EXPECT_EQ(std::u16string(name).size(), 255U);
  EXPECT_EQ(extension[0], 0);
}

TEST(Paths, FullPathResolvesPointsInTheText) {
  const std::pair<const TCHAR*, std::u16string> rows[] = {
      {_T("C:\\a\\..\\b\\.\\c.txt"), u"C:\\b\\c.txt"},
      {_T("C:/a/b/"), u"C:\\a\\b\\"},
      {_T("C:\\..\\..\\x"), u"C:\\x"},
      {_T("C:"), u"C:\\"},
      {_T("\\\\server\\share\\..\\x"), u"\\\\server\\share\\x"},
  };
  TCHAR buffer[300];
  for (const auto& [path, wanted] : rows) {
    EXPECT_EQ(GetFullPathNameW(path, 300, buffer, nullptr), wanted.size());
    EXPECT_EQ(buffer, wanted);
  }
  LPTSTR part = nullptr;
  EXPECT_EQ(GetFullPathNameW(_T("C:\\ab\\cd"), 8, buffer, &part), 9U);
  EXPECT_EQ(GetFullPathNameW(_T("C:\\a\\bc"), 8, buffer, &part), 7U);
  EXPECT_EQ(std::u16string(part), u"bc");
}

}  // namespace
