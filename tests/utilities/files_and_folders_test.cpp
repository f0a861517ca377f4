// Operations on files and folders: their results, and the files on the disk afterwards; the free helpers for paths,
// names and times of files.
#include "share/utilities/files_and_folders.h"

#include <cstring>
#include <ctime>

#include "platform/process.h"
#include "share/env/app_env.h"
#include "share/utilities/file_helpers.h"
#include "tests/utilities/files_fixture.h"
#include "tests/values.h"

namespace {

namespace fs = std::filesystem;

using FilesAndFolders = kvtest::FilesTest;

TEST_F(FilesAndFolders, FolderIsMadeOneLevelDeep) {
  CString one = At("one"), two = At("two/three");
  EXPECT_EQ(files.CreateDirectoryW(one), 1);
  EXPECT_TRUE(fs::is_directory(On("one")));
  EXPECT_EQ(files.CreateDirectoryW(one), 0);
  EXPECT_EQ(files.CreateDirectoryW(two), 0);
  CString none;
  EXPECT_EQ(files.CreateDirectoryW(none), 0);
}

TEST_F(FilesAndFolders, DeletingTakesAllThatLiesInIt) {
  std::string deep = "gone";
  for (int i = 0; i < 300; ++i) deep += "/d" + std::to_string(i % 10);
  folder.Write(deep + "/file", "x");
  for (int i = 0; i < 1000; ++i) folder.Write("gone/many/" + std::to_string(i), "x");
  folder.Write("kept", "x");
  CString gone = At("gone/");
  EXPECT_EQ(files.DeleteDirectory(gone), 1);
  EXPECT_EQ(Tree(""), "kept=x ");
  EXPECT_EQ(files.DeleteDirectory(gone), 0);
  CString file = At("kept");
  EXPECT_EQ(files.DeleteDirectory(file), 0);
  CString none;
  EXPECT_EQ(files.DeleteDirectory(none), 0);
  EXPECT_EQ(Tree(""), "kept=x ");
}

TEST_F(FilesAndFolders, DeletingNeverLeavesTheFolder) {
  folder.Write("outside/precious", "x");
  fs::create_directories(On("gone/sub"));
  fs::create_directory_symlink(On("outside"), On("gone/sub/link"));
  fs::create_directory_symlink("..", On("gone/sub/up"));
  fs::create_symlink(On("outside/precious"), On("gone/file"));
  fs::create_symlink("nowhere", On("gone/nothing"));
  fs::create_directory_symlink(On("outside"), On("whole"));
  CString gone = At("gone"), whole = At("whole/");
  EXPECT_EQ(files.DeleteDirectory(gone), 1);
  EXPECT_EQ(files.DeleteDirectory(whole), 1);
  EXPECT_EQ(Tree(""), "outside/ outside/precious=x ");
  folder.Write("trap/..\\outside\\precious", "a name with backslashes");
  CString trap = At("trap");
  EXPECT_EQ(files.DeleteDirectory(trap), 0);
  EXPECT_EQ(Tree("outside"), "precious=x ");
}

TEST_F(FilesAndFolders, CopyMakesTheSameTree) {
  folder.Write("from/a", "1");
  folder.Write("from/sub/b", "2");
  folder.Write("outside/c", "3");
  fs::create_directory(On("from/empty"));
  fs::create_symlink(On("outside/c"), On("from/link"));
  folder.Write("to/a", "old");
  EXPECT_EQ(files.CopyDirectoryWithContents(At("from"), At("to")), 1);
  EXPECT_EQ(Tree("to"), "a=1 empty/ link=3 sub/ sub/b=2 ");
  EXPECT_EQ(files.CopyDirectoryWithContents(At("from/"), At("from/sub")), 1) << "into itself";
  EXPECT_EQ(Tree("from/sub"), "a=1 b=2 empty/ link=3 sub/ sub/b=2 ");
  for (const char* name : {"twins/A", "twins/a", "twins/Sub/c", "twins/sub/d"}) folder.Write(name, name);
  EXPECT_EQ(files.CopyDirectoryWithContents(At("twins"), At("single")), 0) << "names that collide";
  EXPECT_EQ(Tree("single"), "A=twins/A Sub/ Sub/c=twins/Sub/c ");
  EXPECT_EQ(files.CopyDirectoryWithContents(At("none"), At("new")), 0);
  EXPECT_EQ(files.CopyDirectoryWithContents(At("outside"), At("none/new")), 0);
  EXPECT_EQ(files.CopyDirectoryWithContents(At("outside"), At("to/a")), 0) << "a file in the place of the folder";
  EXPECT_FALSE(fs::exists(On("new")));
  fs::create_directory_symlink("..", On("from/sub/up"));
  EXPECT_EQ(files.CopyDirectoryWithContents(At("from"), At("last")), 0) << "a link to a folder is left out";
  EXPECT_EQ(Tree("last/sub"), "a=1 b=2 empty/ link=3 sub/ sub/b=2 ");
}

TEST_F(FilesAndFolders, ListsTellFilesAndFolders) {
  folder.Write("b", "x");
  folder.Write("A", "");
  folder.Write("sub/c", "x");
  CList<CString> names;
  names.AddTail(CString(_T("first")));
  EXPECT_EQ(files.GetFileNameListFromFolder(At(""), names), 1);
  EXPECT_EQ(Joined(names), "first A b ");
  names.RemoveAll();
  EXPECT_EQ(files.GetNonZeroSizeFileNameListFromFolder(At(""), names), 1);
  EXPECT_EQ(files.GetDirectoriesInFolder(At(""), names), 1);
  EXPECT_EQ(files.GetDirectoriesInFolder(At("sub"), names), 1);
  EXPECT_EQ(Joined(names), "b sub ");
  for (const CString& wrong : {At("none"), At("b"), CString()})
    EXPECT_EQ(files.GetFileNameListFromFolder(wrong, names), 0);
  CString name = _T("kept");
  EXPECT_EQ(files.GetFirstMatchingFileInFolder(At(""), _T("s*"), name), 0);
  EXPECT_EQ(name, _T("kept"));
  EXPECT_EQ(files.GetFirstMatchingFileInFolder(At(""), _T("*"), name), 1);
  EXPECT_EQ(name, _T("A"));
}

TEST_F(FilesAndFolders, OnlyFilesExistAndHaveSizes) {
  folder.Write("empty", "");
  folder.Write("file", std::string(1536, 'x'));
  fs::create_symlink("file", On("link"));
  const std::tuple<CString, int, LPCTSTR, LPCTSTR> rows[] = {
      {At("file"), 1, _T("1536 bytes"), _T("1.50 KB")},
      {At("link"), 1, _T("1536 bytes"), _T("1.50 KB")},
      {At("empty"), 1, _T(""), _T("")},
      {At(""), 0, _T(""), _T("")},
      {At("none"), 0, _T(""), _T("")},
      {CString(), 0, _T(""), _T("")},
  };
  for (const auto& [path, exists, bytes, kilobytes] : rows) {
    SCOPED_TRACE(ToUtf8(path));
    EXPECT_EQ(files.DoesFileExist(path), exists);
    EXPECT_EQ(files.GetFileSize(path, 0), bytes);
    EXPECT_EQ(files.GetFileSize(path, 1), kilobytes);
  }
}

TEST_F(FilesAndFolders, TemporaryFilesLieInTheTemporaryFolder) {
  SetEnvironmentVariableW(_T("TMPDIR"), folder.Path().string<TCHAR>().c_str());
  CString place, path;
  EXPECT_EQ(files.GetTempFolderLocation(place), 1);
  EXPECT_EQ(place, At(""));
  EXPECT_EQ(::CreateTempFileName(_T("q"), path), 1);
  EXPECT_EQ(path.Left(place.GetLength() + 1), place + _T("q"));
  EXPECT_EQ(files.CreateTempFileName(path), 1);
  EXPECT_EQ(files.DoesFileExist(path), 1);
  EXPECT_EQ(files.IsFileInTempDirectory(path.MakeUpper()), 1);
  EXPECT_EQ(files.IsFileInTempDirectory(_T("C:\\file")), 0);
  EXPECT_EQ(files.HasCreateFilePermission(place), 1);
  EXPECT_EQ(files.HasCreateFilePermission(At("none")), 0);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 2) << "only the temporary files";
  SetEnvironmentVariableW(_T("TMPDIR"), (_T("/") + Text(300, _T('x'))).c_str());
  EXPECT_EQ(files.GetTempFolderLocation(place), 0);
  EXPECT_EQ(place, _T(""));
  path = _T("kept");
  EXPECT_EQ(files.CreateTempFileName(path), 0);
  EXPECT_EQ(path, _T("kept"));
  SetEnvironmentVariableW(_T("TMPDIR"), nullptr);
}

TEST_F(FilesAndFolders, TextsOfPathsAreCompleted) {
  using Change = int (QFFileAndFolderUtilities::*)(CString&);
  const std::tuple<Change, LPCTSTR, LPCTSTR> rows[] = {
      {&QFFileAndFolderUtilities::EnsureFileExtHasDot, _T(".txt"), _T(".txt")},
      {&QFFileAndFolderUtilities::EnsureFileExtHasDot, _T(""), _T(".")},
      {&QFFileAndFolderUtilities::EnsureFolderPathEndsWithSlash, _T("C:\\a\\"), _T("C:\\a\\")},
      {&QFFileAndFolderUtilities::EnsureFolderPathEndsWithSlash, _T(""), _T("\\")},
      {&QFFileAndFolderUtilities::RemoveExtraSlaces, _T("\\\\host\\\\a\\\\\\\\b\\"), _T("\\\\host\\a\\b\\")},
      {&QFFileAndFolderUtilities::RemoveExtraSlaces, _T(""), _T("")},
  };
  for (const auto& [change, before, after] : rows) {
    CString text = before;
    EXPECT_EQ((files.*change)(text), 1);
    EXPECT_EQ(text, after) << ToUtf8(CString(before));
  }
  CString text;
  for (LPCTSTR start : {_T("C:\\a"), _T("C:\\a\\\\")}) {
    for (LPCTSTR end : {_T("b.c"), _T("\\b.c")}) {
      EXPECT_EQ(files.ConcatFolderPathFileName(start, end, text), 1);
      EXPECT_EQ(text, _T("C:\\a\\b.c"));
    }
  }
  EXPECT_EQ(files.GetFileName(text, text), 1);
  EXPECT_EQ(text, _T("b.c"));
  EXPECT_EQ(files.GetDirectoryName(_T("C:\\a\\b.c"), text), 1);
  EXPECT_EQ(text, _T("C:\\a\\"));
  EXPECT_EQ(files.GetFileName(CString(), text), 0);
}

using FileHelpers = kvtest::FilesTest;

TEST_F(FileHelpers, PathIsSplitAtItsLastSeparatorAndPoint) {
  const CString long_folder = CString(_T('\\')) + CString(_T('f'), 300) + _T('\\'), long_name(_T('n'), 300);
  const std::tuple<CString, CString, CString, CString, CString> rows[] = {
      {_T("C:\\a\\b.c.txt"), _T("C:"), _T("\\a\\"), _T("b.c"), _T(".txt")},
      {_T("C:b"), _T("C:"), _T(""), _T("b"), _T("")},
      {_T("C:.txt"), _T("C:"), _T(""), _T(""), _T(".txt")},
      {_T("a.b/c"), _T(""), _T("a.b/"), _T("c"), _T("")},
      {_T("\\\\host\\share\\"), _T(""), _T("\\\\host\\share\\"), _T(""), _T("")},
      {_T(":"), _T(""), _T(""), _T(":"), _T("")},
      {_T("D:") + long_folder + long_name + _T(".x"), _T("D:"), long_folder, long_name, _T(".x")},
  };
  for (const auto& [path, wantedDrive, wantedFolder, wantedName, wantedExtension] : rows) {
    CString drive, directory, name, extension;
    EXPECT_EQ(ExtractPathAndFileName(path, drive, directory, name, extension), 1);
    EXPECT_EQ(kvtest::Values(drive, directory, name, extension),
              kvtest::Values(wantedDrive, wantedFolder, wantedName, wantedExtension));
    EXPECT_EQ(GetDirectoryName(path, directory), 1);
    EXPECT_EQ(directory, wantedDrive + wantedFolder);
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
  CString a, b;
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
