// Files and folders beyond what every system promises: handles that are never used again, rights, links, names with
// other bytes, and walks among changes.
#include <gtest/gtest.h>

#include <cerrno>

#include "platform/files.h"
#include "platform/folders.h"
#include "tests/scratch.h"

namespace {

namespace fs = std::filesystem;

class LinuxFiles : public testing::Test {
 protected:
  Text At(const std::string& name) const { return ProductPathFromSystem((folder.Path() / name).string()); }

  HANDLE Open(const std::string& name, DWORD access, DWORD disposition) const {
    return CreateFileW(At(name).c_str(), access, 0, nullptr, disposition, 0, nullptr);
  }

  kvtest::ScratchFolder folder;
};

TEST_F(LinuxFiles, ClosedHandleNamesNoLaterFile) {
  const HANDLE file = Open("f", GENERIC_WRITE, CREATE_NEW);
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10U);
  EXPECT_TRUE(FlushFileBuffers(file));
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_FALSE(CloseHandle(file));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
  const HANDLE next = Open("f", GENERIC_READ, OPEN_EXISTING);
  char byte = 0;
  EXPECT_FALSE(ReadFile(file, &byte, 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
  EXPECT_TRUE(CloseHandle(next));
}

TEST_F(LinuxFiles, StreamsTakeTheBytesAsTheyAreAndRefuseOtherModes) {
  const struct {
    const TCHAR* mode;
    std::string before, wanted;
  } rows[] = {
      {_T("wt"), "old", ""},
      {_T("r+, ccs=UTF-16LE"), "", "\xFF\xFE"},
      {_T("w, ccs=UTF-16LE"), "old", "\xFF\xFE"},
      {_T("w+b,ccs=utf-16le "), "", "\xFF\xFE"},
      {_T("a, ccs=UTF-16LE"), "", "\xFF\xFE"},
      {_T("a, ccs=UTF-16LE"), "old", "old"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(Text(row.mode)));
    folder.Write("f", row.before);
    FILE* file = _wfopen(At("f").c_str(), row.mode);
    ASSERT_NE(file, nullptr);
    std::fputs("a\n", file);
    EXPECT_EQ(std::fclose(file), 0);
    EXPECT_EQ(kvtest::ReadFile(folder.Path() / "f"), row.wanted + "a\n");
  }
  for (const TCHAR* mode : {_T(""), _T("q"), _T("b"), _T("rz"), _T("rx")}) {
    errno = 0;
    EXPECT_EQ(_wfopen(At("f").c_str(), mode), nullptr);
    EXPECT_EQ(errno, EINVAL);
  }
}

TEST_F(LinuxFiles, NamesOfOtherSystemsAreUsedWhereTheyExist) {
  for (const char* name : {"a*b", "f.", "f", "c. /d", "c/d "}) folder.Write(name, name);
  for (const char* name : {"a*b", "f.", "f", "c. /d", "c/d "}) {
    const HANDLE file = Open(name, GENERIC_READ, OPEN_EXISTING);
    char bytes[8];
    DWORD count = 0;
    EXPECT_TRUE(ReadFile(file, bytes, 8, &count, nullptr)) << name;
    EXPECT_EQ(std::string(bytes, count), name);
    CloseHandle(file);
  }
  EXPECT_TRUE(DeleteFileW(At("f").c_str()));
  EXPECT_EQ(SystemPathFromProduct(At("f. .").c_str()), (folder.Path() / "f").string());
}

TEST_F(LinuxFiles, CopyKeepsRightsAndFollowsLinks) {
  const fs::path from = folder.Write("from", std::string(1'000'000, 'x'));
  const auto written = fs::file_time_type::clock::now() - std::chrono::hours(1000);
  fs::last_write_time(from, written);
  fs::permissions(from, fs::perms(0555));
  EXPECT_TRUE(CopyFileW(At("from").c_str(), At("to").c_str(), TRUE));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "to"), std::string(1'000'000, 'x'));
  EXPECT_EQ(fs::last_write_time(folder.Path() / "to"), written);
  EXPECT_EQ(fs::status(folder.Path() / "to").permissions(), fs::perms(0555));
  folder.Write("old", "old");
  fs::create_symlink("from", folder.Path() / "link");
  EXPECT_FALSE(CopyFileW(At("link").c_str(), At("from").c_str(), FALSE));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_SHARING_VIOLATION));
  EXPECT_TRUE(CopyFileW(At("link").c_str(), At("old").c_str(), FALSE));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), std::string(1'000'000, 'x'));
}

class LinuxFolders : public LinuxFiles {
 protected:
  // The names that a search returns, each followed by a blank; "error N" if it finds nothing.
  std::string Found(const std::string& pattern) const {
    WIN32_FIND_DATAW facts;
    const HANDLE search = FindFirstFileW(At(pattern).c_str(), &facts);
    if (search == INVALID_HANDLE_VALUE) return "error " + std::to_string(GetLastError());
    std::string names;
    do {
      names += fs::path(SystemPathFromProduct((At("") + facts.cFileName).c_str())).filename().string() + " ";
    } while (FindNextFileW(search, &facts));
    EXPECT_TRUE(FindClose(search));
    return names;
  }
};

TEST_F(LinuxFolders, PatternsFollowThePlatformsRules) {
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

TEST_F(LinuxFolders, LinksHaveTheirMarkAndTheFactsOfTheTarget) {
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

TEST_F(LinuxFolders, EntriesThatDisappearDuringAWalkAreSkipped) {
  for (const char* name : {"a", "b", "c"}) folder.Write(name, "");
  WIN32_FIND_DATAW facts;
  const HANDLE search = FindFirstFileW(At("?").c_str(), &facts);
  fs::remove(folder.Path() / "b");
  folder.Write("bb", "");
  Text names = facts.cFileName;
  while (FindNextFileW(search, &facts)) names += facts.cFileName;
  EXPECT_TRUE(FindClose(search));
  EXPECT_EQ(names, _T("ac"));
}

TEST(LinuxPaths, PartsThatAreTooLongAreCut) {
  TCHAR name[_MAX_FNAME], extension[_MAX_EXT];
  _wsplitpath(Text(500, 'n').c_str(), nullptr, nullptr, name, extension);
  EXPECT_EQ(Text(name).size(), 255U);
  EXPECT_EQ(extension[0], 0);
}

}  // namespace
