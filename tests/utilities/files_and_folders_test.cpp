// Operations on files and folders: their results, and the files on the disk afterwards.
#include "share/utilities/files_and_folders.h"

#include <gtest/gtest.h>

#include "platform/process.h"
#include "share/utilities/file_helpers.h"
#include "tests/utilities/files_fixture.h"

namespace {

namespace fs = std::filesystem;

using FilesAndFolders = kvtest::FilesTest;

TEST_F(FilesAndFolders, FolderIsMadeOneLevelDeep) {
  CString one = At("one");
  CString two = At("two/three");
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
  CString gone = At("gone");
  CString whole = At("whole/");
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
  const struct {
    CString path;
    int exists;
    LPCTSTR bytes;
    LPCTSTR kilobytes;
  } rows[] = {
      {At("file"), 1, _T("1536 bytes"), _T("1.50 KB")},
      {At("link"), 1, _T("1536 bytes"), _T("1.50 KB")},
      {At("empty"), 1, _T(""), _T("")},
      {At(""), 0, _T(""), _T("")},
      {At("none"), 0, _T(""), _T("")},
      {CString(), 0, _T(""), _T("")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(ToUtf8(row.path));
    EXPECT_EQ(files.DoesFileExist(row.path), row.exists);
    EXPECT_EQ(files.GetFileSize(row.path, 0), row.bytes);
    EXPECT_EQ(files.GetFileSize(row.path, 1), row.kilobytes);
  }
}

TEST_F(FilesAndFolders, TemporaryFilesLieInTheTemporaryFolder) {
  SetEnvironmentVariableW(_T("TMPDIR"), folder.Path().string<TCHAR>().c_str());
  CString place;
  CString path;
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
  const struct {
    Change change;
    LPCTSTR before;
    LPCTSTR after;
  } rows[] = {
      {&QFFileAndFolderUtilities::EnsureFileExtHasDot, _T(".txt"), _T(".txt")},
      {&QFFileAndFolderUtilities::EnsureFileExtHasDot, _T(""), _T(".")},
      {&QFFileAndFolderUtilities::EnsureFolderPathEndsWithSlash, _T("C:\\a\\"), _T("C:\\a\\")},
      {&QFFileAndFolderUtilities::EnsureFolderPathEndsWithSlash, _T(""), _T("\\")},
      {&QFFileAndFolderUtilities::RemoveExtraSlaces, _T("\\\\host\\\\a\\\\\\\\b\\"), _T("\\\\host\\a\\b\\")},
      {&QFFileAndFolderUtilities::RemoveExtraSlaces, _T(""), _T("")},
  };
  for (const auto& row : rows) {
    CString text = row.before;
    EXPECT_EQ((files.*row.change)(text), 1);
    EXPECT_EQ(text, row.after) << ToUtf8(CString(row.before));
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

}  // namespace
