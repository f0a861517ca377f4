// Walking folders and copying files: the calls as their descriptions have them.
#include "platform/folders.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/handles.h"
#include "platform/time.h"
#include "tests/scratch.h"

namespace {

namespace fs = std::filesystem;

class Folders : public testing::Test {
 protected:
  std::u16string At(const std::string& name) const { return ProductPathFromSystem((folder.Path() / name).string()); }

  // The names that a search gives, each with a blank behind; "error N" if it finds none.
  std::string Found(const std::string& pattern) const {
    WIN32_FIND_DATAW facts;
    const HANDLE search = FindFirstFileW(At(pattern).c_str(), &facts);
    if (search == INVALID_HANDLE_VALUE) return "error " + std::to_string(GetLastError());
    std::string names;
    do {
      names += fs::path(facts.cFileName).string() + " ";
    } while (FindNextFileW(search, &facts));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NO_MORE_FILES));
    EXPECT_TRUE(FindClose(search));
    return names;
  }

  DWORD AttributesFound(const std::string& name) const {
    WIN32_FIND_DATAW facts = {};
    EXPECT_TRUE(FindClose(FindFirstFileW(At(name).c_str(), &facts))) << name;
    return facts.dwFileAttributes;
  }

  kvtest::ScratchFolder folder;
};

TEST_F(Folders, PatternsFollowThePlatformsRules) {
  for (const char* name : {"a.txt", "B.TXT", "ab", "ab.c.txt", "abc", "x.htm", "x.html", "z."}) folder.Write(name, "");
  const struct {
    const char* pattern;
    const char* names;
  } rows[] = {
      {"*", ". .. a.txt ab ab.c.txt abc B.TXT x.htm x.html z. "},
      {"*.*", ". .. a.txt ab ab.c.txt abc B.TXT x.htm x.html z. "},
      {"*.txt", "a.txt ab.c.txt B.TXT "},
      {"*.", "ab abc "},
      {"a?", "ab "},
      {"a??", "ab abc "},
      {"???.txt", "a.txt B.TXT "},
      {"ab*.*", "ab ab.c.txt abc "},
      {"*.htm", "x.htm "},
      {"x.htm?", "x.htm x.html "},
      {"*B*", "ab ab.c.txt abc B.TXT "},
      {"A.TXT", "a.txt "},
      {"*.q", "error 2"},
      {"q", "error 2"},
      {"", "error 2"},  // the path ends in a backslash
      {"none/*", "error 3"},
      {"ab/*", "error 267"},
      {"*/ab", "error 123"},
  };
  for (const auto& row : rows) EXPECT_EQ(Found(row.pattern), row.names) << row.pattern;
  EXPECT_EQ(FindFirstFileW(nullptr, nullptr), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_PATH_NOT_FOUND));
  EXPECT_FALSE(FindClose(INVALID_HANDLE_VALUE));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
}

TEST_F(Folders, PatternOfManyStarsTakesNoTime) {
  std::string name(200, 'a');
  name += 'b';
  folder.Write(name, "");
  std::string pattern;
  for (int i = 0; i < 100; ++i) pattern += "*a";
  EXPECT_EQ(Found(pattern), "error 2");
}

TEST_F(Folders, LinksHaveTheirMarkAndTheFactsOfTheTarget) {
  folder.Write("file", "12345");
  fs::create_directory(folder.Path() / "sub");
  fs::create_symlink("file", folder.Path() / "to_file");
  fs::create_symlink("sub", folder.Path() / "to_sub");
  fs::create_symlink("nothing", folder.Path() / "to_nothing");
  EXPECT_EQ(AttributesFound("file"), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(AttributesFound("sub"), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(AttributesFound("to_file"), FILE_ATTRIBUTE_REPARSE_POINT);
  EXPECT_EQ(AttributesFound("to_sub"), FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(AttributesFound("to_nothing"), FILE_ATTRIBUTE_REPARSE_POINT);
  WIN32_FIND_DATAW facts = {};
  EXPECT_TRUE(FindClose(FindFirstFileW(At("to_file").c_str(), &facts)));
  EXPECT_EQ(facts.nFileSizeLow, 5u);
  EXPECT_EQ(facts.dwReserved0, IO_REPARSE_TAG_SYMLINK);
  EXPECT_TRUE(RemoveDirectoryW(At("to_sub/").c_str()));
  EXPECT_EQ(Found("*sub"), "sub ");
}

TEST_F(Folders, NamesThatThePathCannotTellAreLeftOut) {
  for (const char* name : {"back\\slash", "..\\up", "\xFF\xFE", "ok"}) folder.Write(name, "");
  EXPECT_EQ(Found("*"), ". .. ok ");
}

TEST_F(Folders, WhatGoesMeanwhileIsPassedOver) {
  for (const char* name : {"a", "b", "c"}) folder.Write(name, "");
  WIN32_FIND_DATAW facts;
  const HANDLE search = FindFirstFileW(At("?").c_str(), &facts);
  fs::remove(folder.Path() / "b");
  folder.Write("bb", "");
  std::u16string names = facts.cFileName;
  while (FindNextFileW(search, &facts)) names += facts.cFileName;
  EXPECT_TRUE(FindClose(search));
  EXPECT_EQ(names, u"ac");
  EXPECT_FALSE(FindNextFileW(search, &facts));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
}

TEST_F(Folders, CopyKeepsContentRightsAndTime) {
  const std::string bytes(1'000'000, 'x');
  const fs::path from = folder.Write("from", bytes);
  const auto written = fs::file_time_type::clock::now() - std::chrono::hours(1000);
  fs::last_write_time(from, written);
  fs::permissions(from, fs::perms(0555));
  EXPECT_TRUE(CopyFileW(At("from").c_str(), At("to").c_str(), TRUE));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "to"), bytes);
  EXPECT_EQ(fs::last_write_time(folder.Path() / "to"), written);
  EXPECT_EQ(fs::status(folder.Path() / "to").permissions(), fs::perms(0555));
}

TEST_F(Folders, CopyFailsWithoutTouchingTheTarget) {
  folder.Write("from", "new");
  folder.Write("old", "old");
  folder.Write("locked", "old");
  fs::permissions(folder.Path() / "locked", fs::perms(0444));
  fs::create_directory(folder.Path() / "sub");
  fs::create_symlink("from", folder.Path() / "link");
  const struct {
    const char* from;
    const char* to;
    BOOL fail_if_exists;
    LONG status;
  } rows[] = {
      {"from", "old", TRUE, ERROR_FILE_EXISTS},          {"none", "old", FALSE, ERROR_FILE_NOT_FOUND},
      {"none/none", "old", FALSE, ERROR_PATH_NOT_FOUND}, {"sub", "old", FALSE, ERROR_ACCESS_DENIED},
      {"from", "sub", FALSE, ERROR_ACCESS_DENIED},       {"from", "locked", FALSE, ERROR_ACCESS_DENIED},
      {"from", "none/to", FALSE, ERROR_PATH_NOT_FOUND},  {"from", "from", FALSE, ERROR_SHARING_VIOLATION},
      {"link", "from", FALSE, ERROR_SHARING_VIOLATION},
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(CopyFileW(At(row.from).c_str(), At(row.to).c_str(), row.fail_if_exists)) << row.from << row.to;
    EXPECT_EQ(GetLastError(), DWORD(row.status)) << row.from << " to " << row.to;
  }
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), "old");
  EXPECT_EQ(Found("*~*"), "error 2") << "something was left beside";
  EXPECT_TRUE(CopyFileW(At("link").c_str(), At("old").c_str(), FALSE));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), "new");
}

TEST(FileTimes, HaveCalendarFields) {
  const struct {
    ULONGLONG units;
    SYSTEMTIME fields;
  } rows[] = {
      {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
      {116444736000000000, {1970, 1, 4, 1, 0, 0, 0, 0}},
      {133537247989876540, {2024, 2, 4, 29, 23, 59, 58, 987}},
      {0x7FFFFFFFFFFFFFFF, {30828, 9, 4, 14, 2, 48, 5, 477}},
  };
  for (const auto& row : rows) {
    const FILETIME time = {DWORD(row.units), DWORD(row.units >> 32)};
    SYSTEMTIME fields;
    ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
    EXPECT_EQ(std::memcmp(&fields, &row.fields, sizeof fields), 0) << row.units;
  }
  const FILETIME beyond = {0, 0x80000000};
  SYSTEMTIME fields;
  FILETIME local;
  EXPECT_FALSE(FileTimeToSystemTime(&beyond, &fields));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
  EXPECT_FALSE(FileTimeToLocalFileTime(&beyond, &local));
}

}  // namespace
