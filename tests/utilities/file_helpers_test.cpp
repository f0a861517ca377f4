// The free helpers for paths, names and times of files.
#include "share/utilities/file_helpers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>

#include "platform/process.h"
#include "share/env/app_env.h"
#include "tests/utilities/files_fixture.h"

namespace {

using FileHelpers = kvtest::FilesTest;

TEST_F(FileHelpers, PathIsSplitAtItsLastSeparatorAndPoint) {
  const CString long_folder = CString(_T('\\')) + CString(_T('f'), 300) + _T('\\');
  const CString long_name(_T('n'), 300);
  const struct {
    CString path, drive, folder, name, extension;
  } rows[] = {
      {_T("C:\\a\\b.c.txt"), _T("C:"), _T("\\a\\"), _T("b.c"), _T(".txt")},
      {_T("C:b"), _T("C:"), _T(""), _T("b"), _T("")},
      {_T("C:.txt"), _T("C:"), _T(""), _T(""), _T(".txt")},
      {_T("a.b/c"), _T(""), _T("a.b/"), _T("c"), _T("")},
      {_T("\\\\host\\share\\"), _T(""), _T("\\\\host\\share\\"), _T(""), _T("")},
      {_T(":"), _T(""), _T(""), _T(":"), _T("")},
      {_T("D:") + long_folder + long_name + _T(".x"), _T("D:"), long_folder, long_name, _T(".x")},
  };
  for (const auto& row : rows) {
    CString drive, directory, name, extension;
    EXPECT_EQ(ExtractPathAndFileName(row.path, drive, directory, name, extension), 1);
    EXPECT_EQ(drive + _T('|') + directory + _T('|') + name + _T('|') + extension,
              row.drive + _T('|') + row.folder + _T('|') + row.name + _T('|') + row.extension);
    EXPECT_EQ(GetDirectoryName(row.path, directory), 1);
    EXPECT_EQ(directory, row.drive + row.folder);
  }
  CString kept = _T("kept");
  EXPECT_EQ(ExtractPathAndFileName(CString(), kept, kept, kept, kept), 0);
  EXPECT_EQ(GetDirectoryName(CString(), kept), 0);
  EXPECT_EQ(kept, _T("kept"));
}

TEST_F(FileHelpers, FileIsFoundInItsFoldersList) {
  folder.Write("File.txt", "x");
  std::filesystem::create_directory(On("sub"));
  const CString place = At("").TrimRight(_T("\\"));
  EXPECT_EQ(DoesFileExistAtGivenPath(place + _T("\\FILE.TXT")), 1);
  for (LPCTSTR missing : {_T("\\File"), _T("\\sub"), _T("\\none\\File.txt"), _T("\\"), _T("\\..")})
    EXPECT_EQ(DoesFileExistAtGivenPath(place + missing), 0) << ToUtf8(CString(missing));
  for (LPCTSTR part : {_T(""), _T("File.txt"), _T("\\File.txt"), _T("\\")})
    EXPECT_EQ(DoesFileExistAtGivenPath(part), 0);
}

TEST_F(FileHelpers, TemporaryNamesAreNewFiles) {
  const CString place = At("").TrimRight(_T("\\"));
  CString a;
  CString b;
  EXPECT_EQ(CreateTempFileName(place, _T("kvtest"), a), 1);
  EXPECT_EQ(CreateTempFileName(place, _T("kvtest"), b), 1);
  EXPECT_NE(a, b);
  EXPECT_EQ(a.Left(place.GetLength() + 4), place + _T("\\kvt"));
  EXPECT_EQ(DoesFileExistAtGivenPath(a), 1);
  EXPECT_EQ(CreateTempFileName(place + _T("\\none"), _T("kvtest"), b), 0);
}

TEST_F(FileHelpers, ToolPathMovesToThisInstallation) {
  const CString data = AppEnv()->GetKVDataPath();
  CString result = _T("kept");
  EXPECT_EQ(GetCorrectToolFilePath(_T("D:\\Old\\Tooling\\Mill\\Tooling.x"), result), 1);
  EXPECT_EQ(result, data + _T("Tooling\\Mill\\Tooling.x"));
  result = _T("kept");
  for (LPCTSTR path : {_T("Tooling\\a\\Tooling"), _T("D:\\tooling\\a"), _T("")})
    EXPECT_EQ(GetCorrectToolFilePath(path, result), 0);
  EXPECT_EQ(result, _T("kept"));
}

TEST_F(FileHelpers, OnlyAsciiLettersAndDigitsArePlain) {
  for (int c = 1; c < 128; ++c) {
    const bool plain = std::isalnum(c) || std::strchr("^&@{}[],$=!_#()%.+~`-", c);
    EXPECT_EQ(HasSpecialCharacters(CString(TCHAR(c))), !plain) << c;
    const CString kept = std::isalnum(c) ? CString(TCHAR(std::tolower(c))) : CString();
    EXPECT_EQ(RemoveSpecialCharacters(CString(TCHAR(c))), kept) << c;
  }
  EXPECT_EQ(HasSpecialCharacters(_T("")), 0);
  EXPECT_EQ(HasSpecialCharacters(_T("plain\u00E9")), 1);
  EXPECT_EQ(RemoveSpecialCharacters(_T("Tool-\u00C9 No. 5\u4E00b")), _T("toolno5b"));
}

TEST_F(FileHelpers, FileTimesHaveTheYearFirst) {
  const FILETIME time = {DWORD(133537247989876540), DWORD(133537247989876540 >> 32)};
  EXPECT_EQ(Convert_FILETIME_ToString(time), _T("2024-02-29 23:59:58"));
  EXPECT_EQ(Convert_FILETIME_ToString({0, 0x80000000}), _T(""));
  SetEnvironmentVariableW(_T("TZ"), _T("XYZ-2:30"));
  std::tm fields = {};
  std::mktime(&fields);  // reads the variable
  EXPECT_EQ(Convert_FILETIME_LocalFileTime_ToString(time), _T("2024-03-01 02:29:58"));
  SetEnvironmentVariableW(_T("TZ"), nullptr);
  std::mktime(&fields);
}

}  // namespace
