// Paths taken apart and completed.
#include "platform/paths.h"

#include <gtest/gtest.h>

#include "platform/files.h"

namespace {

TEST(Paths, SplitGivesFourParts) {
  const struct {
    const TCHAR* path;
    std::u16string drive, folder, name, extension;
  } rows[] = {
      {_T("C:\\Program Files\\KV\\KVSHAREu.dll"), u"C:", u"\\Program Files\\KV\\", u"KVSHAREu", u".dll"},
      {_T("a/b.c/d"), u"", u"a/b.c/", u"d", u""},
      {_T("C:x.tar.gz"), u"C:", u"", u"x.tar", u".gz"},
      {_T("\\folder.ext\\"), u"", u"\\folder.ext\\", u"", u""},
      {_T(".ini"), u"", u"", u"", u".ini"},
      {_T("name."), u"", u"", u"name", u"."},
      {_T(""), u"", u"", u"", u""},
      {nullptr, u"", u"", u"", u""},
  };
  for (const auto& row : rows) {
    TCHAR drive[_MAX_DRIVE], folder[_MAX_DIR], name[_MAX_FNAME], extension[_MAX_EXT];
    _wsplitpath(row.path, drive, folder, name, extension);
    EXPECT_EQ(drive, row.drive);
    EXPECT_EQ(folder, row.folder);
    EXPECT_EQ(name, row.name);
    EXPECT_EQ(extension, row.extension);
  }
  const std::u16string tooLong(500, 'n');
  TCHAR name[_MAX_FNAME];
  _wsplitpath(tooLong.c_str(), nullptr, nullptr, name, nullptr);
  EXPECT_EQ(std::u16string(name).size(), 255U);
}

TEST(Paths, FullPathResolvesPointsInTheText) {
  const struct {
    const TCHAR* path;
    std::u16string wanted;
  } rows[] = {
      {_T("C:\\a\\..\\b\\.\\c.txt"), u"C:\\b\\c.txt"},
      {_T("C:/a/b/"), u"C:\\a\\b\\"},
      {_T("C:\\..\\..\\x"), u"C:\\x"},
      {_T("C:"), u"C:\\"},
      {_T("\\\\server\\share\\..\\x"), u"\\\\server\\share\\x"},
      {_T("C:\\a\\\\b\\.."), u"C:\\a\\"},
  };
  for (const auto& row : rows) {
    TCHAR buffer[300];
    EXPECT_EQ(GetFullPathNameW(row.path, 300, buffer, nullptr), row.wanted.size());
    EXPECT_EQ(buffer, row.wanted);
  }
  TCHAR buffer[8];
  LPTSTR part = nullptr;
  EXPECT_EQ(GetFullPathNameW(_T("C:\\ab\\cd"), 8, buffer, &part), 9U);
  EXPECT_EQ(GetFullPathNameW(_T("C:\\a\\bc"), 8, buffer, &part), 7U);
  EXPECT_EQ(std::u16string(part), u"bc");
  EXPECT_EQ(GetFullPathNameW(_T(""), 8, buffer, &part), 0U);
}

TEST(Paths, TempPathEndsInABackslashAndTellsTheSizeNeeded) {
  TCHAR buffer[MAX_PATH];
  const DWORD length = GetTempPathW(MAX_PATH, buffer);
  ASSERT_GT(length, 0U);
  EXPECT_EQ(buffer[length - 1], '\\');
  EXPECT_EQ(GetFileAttributesW(buffer), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetTempPathW(length, buffer), length + 1);
}

}  // namespace
