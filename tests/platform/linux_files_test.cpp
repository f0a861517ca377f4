// Files and folders beyond what every system promises: handles that are never used again, rights, links, names with
// other bytes, and walks among changes.
#include <cerrno>

#include "tests/platform/files_support.h"

namespace {

namespace fs = std::filesystem;

using LinuxFiles = kvtest::FilesTest;
using LinuxFolders = kvtest::FilesTest;

TEST_F(LinuxFiles, ClosedHandleNamesNoLaterFile) {
  const HANDLE file = Open("f", GENERIC_WRITE, CREATE_NEW);
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10U);
  EXPECT_TRUE(FlushFileBuffers(file));
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(StatusOf(CloseHandle(file)), ERROR_INVALID_HANDLE);
  const HANDLE next = Open("f", GENERIC_READ, OPEN_EXISTING);
  char byte = 0;
  EXPECT_EQ(StatusOf(ReadFile(file, &byte, 1, &count, nullptr)), ERROR_INVALID_HANDLE);
  EXPECT_TRUE(CloseHandle(next));
}

TEST_F(LinuxFiles, StreamsTakeTheBytesAsTheyAreAndRefuseOtherModes) {
  const std::tuple<const TCHAR*, std::string, std::string> rows[] = {
      {_T("wt"), "old", ""},
      {_T("r+, ccs=UTF-16LE"), "", "\xFF\xFE"},
      {_T("w+b,ccs=utf-16le "), "", "\xFF\xFE"},
      {_T("a, ccs=UTF-16LE"), "old", "old"},
  };
  for (const auto& [mode, before, wanted] : rows) ExpectStream(mode, before, "a\n", wanted + "a\n");
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
  EXPECT_EQ(StatusOf(CopyFileW(At("link").c_str(), At("from").c_str(), FALSE)), ERROR_SHARING_VIOLATION);
  EXPECT_TRUE(CopyFileW(At("link").c_str(), At("old").c_str(), FALSE));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), std::string(1'000'000, 'x'));
}

TEST_F(LinuxFolders, PatternsFindNamesOfOtherSystemsInOrderWithoutCase) {
  for (const char* name : {"a.txt", "B.TXT", "ab", "z."}) folder.Write(name, "");
  folder.Write("\xFF\xFE", "");
  for (const char* name : {"back\\slash", "..\\up"}) folder.Write(name, "not in the product's form");
  const std::pair<const char*, const char*> rows[] = {
      {"*", ". .. a.txt ab B.TXT z. \xFF\xFE "},
      {"*.*", ". .. a.txt ab B.TXT z. \xFF\xFE "},
      {"*.", "ab \xFF\xFE "},
      {"??", "ab \xFF\xFE "},
  };
  for (const auto& [pattern, names] : rows) EXPECT_EQ(Found(pattern, /*sorted=*/false), names) << pattern;
}

TEST_F(LinuxFolders, LinksHaveTheirMarkAndTheFactsOfTheTarget) {
  folder.Write("file", "12345");
  fs::create_directory(folder.Path() / "sub");
  for (const char* target : {"file", "sub", "nothing"})
    fs::create_symlink(target, folder.Path() / ("to_" + std::string(target)));
  const std::tuple<const char*, DWORD, DWORD, DWORD> rows[] = {
      {"file", FILE_ATTRIBUTE_NORMAL, 0, 5},
      {"sub", FILE_ATTRIBUTE_DIRECTORY, 0, 0},
      {"to_file", FILE_ATTRIBUTE_REPARSE_POINT, IO_REPARSE_TAG_SYMLINK, 5},
      {"to_sub", FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY, IO_REPARSE_TAG_SYMLINK, 0},
  };
  WIN32_FIND_DATAW facts = {};
  for (const auto& [name, attributes, tag, bytes] : rows) {
    EXPECT_TRUE(FindClose(FindFirstFileW(At(name).c_str(), &facts))) << name;
    EXPECT_EQ(facts.dwFileAttributes, attributes) << name;
    EXPECT_EQ(facts.dwReserved0, tag) << name;
    EXPECT_EQ(facts.nFileSizeLow, bytes) << name;
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
