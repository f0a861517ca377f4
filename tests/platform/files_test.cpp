// Files: the calls as their descriptions have them. Walks and paths are in folders_test.cpp.
#include <cerrno>
#include <chrono>

#include "tests/platform/files_support.h"

namespace {

namespace fs = std::filesystem;

class Files : public kvtest::FilesTest {
 protected:
  // Without the mark of files that changed since the last backup, which only some systems keep.
  static DWORD Attributes(LPCWSTR path) {
    constexpr DWORD kArchive = 0x20;
    const DWORD found = GetFileAttributesW(path);
    if (found == INVALID_FILE_ATTRIBUTES) return found;
    return (found & ~kArchive) == 0 ? FILE_ATTRIBUTE_NORMAL : found & ~kArchive;
  }
};

TEST_F(Files, AttributesShowFileFolderAndReadOnly) {
  folder.Write("plain.txt", "x");
  folder.Write("locked.txt", "x");
  ASSERT_EQ(_wchmod(At("locked.txt").c_str(), _S_IREAD), 0);
  const std::tuple<const char*, DWORD, LONG> rows[] = {
      {"plain.txt", FILE_ATTRIBUTE_NORMAL, 0},
      {"locked.txt", FILE_ATTRIBUTE_READONLY, 0},
      {"", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"missing.txt", INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND},
      {"missing/file.txt", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& [name, wanted, status] : rows) {
    EXPECT_EQ(StatusOf(GetFileAttributesW(At(name).c_str()) != INVALID_FILE_ATTRIBUTES), status) << name;
    EXPECT_EQ(Attributes(At(name).c_str()), wanted) << name;
  }
  for (const LPCWSTR none : {_T(""), LPCWSTR(nullptr)})
    EXPECT_EQ(StatusOf(GetFileAttributesW(none) != INVALID_FILE_ATTRIBUTES), ERROR_PATH_NOT_FOUND);
}

TEST_F(Files, ReadOnlyMarkRefusesWritingDeletingAndReplacing) {
  folder.Write("old", "kept");
  const Text path = At("old");
  for (const int mark : {_S_IREAD | _S_IWRITE, _S_IWRITE, _S_IREAD}) {
    ASSERT_EQ(_wchmod(path.c_str(), mark), 0);
    for (const int mode : {0, 2, 4, 6}) {
      const bool refused = (mode & 2) != 0 && (mark & _S_IWRITE) == 0;
      errno = 0;
      EXPECT_EQ(_waccess(path.c_str(), mode), refused ? -1 : 0) << mark << " " << mode;
      EXPECT_EQ(errno, refused ? EACCES : 0);
    }
  }
  EXPECT_EQ(StatusOf(DeleteFileW(path.c_str())), ERROR_ACCESS_DENIED);
  EXPECT_EQ(_wfopen(path.c_str(), _T("w")), nullptr);
  EXPECT_EQ(Open("old", GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  folder.Write("new", "new");
  EXPECT_EQ(StatusOf(CopyFileW(At("new").c_str(), path.c_str(), FALSE)), ERROR_ACCESS_DENIED);
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), "kept");
}

TEST_F(Files, DispositionDecidesWhatOpeningDoes) {
  constexpr DWORD kUntold = ~DWORD(0);
  // What GetLastError returns afterwards, if the call says so, and the size of the file, -1 if opening fails.
  const std::tuple<DWORD, bool, DWORD, int> rows[] = {
      {CREATE_NEW, false, kUntold, 0},
      {CREATE_NEW, true, ERROR_FILE_EXISTS, -1},
      {CREATE_ALWAYS, false, 0, 0},
      {CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, 0},
      {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, -1},
      {OPEN_EXISTING, true, kUntold, 3},
      {OPEN_ALWAYS, false, 0, 0},
      {OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, 3},
  };
  for (const auto& [disposition, exists, status, wanted] : rows) {
    SCOPED_TRACE(testing::Message() << disposition << (exists ? " on a file" : " on nothing"));
    fs::remove(folder.Path() / "f");
    if (exists) folder.Write("f", "abc");
    SetLastError(77);
    const HANDLE file = Open("f", GENERIC_READ | GENERIC_WRITE, disposition);
    const DWORD found = GetLastError();
    EXPECT_TRUE(found == status || status == kUntold) << found;
    EXPECT_EQ(file == INVALID_HANDLE_VALUE, wanted < 0);
    if (wanted < 0) continue;
    LARGE_INTEGER size = {};
    EXPECT_TRUE(GetFileSizeEx(file, &size));
    EXPECT_EQ(size.QuadPart, wanted);
    EXPECT_TRUE(CloseHandle(file));
  }
}

TEST_F(Files, HandlesDoWhatTheyWereOpenedFor) {
  folder.Write("f", "0123456789");
  const HANDLE reading = Open("f", GENERIC_READ, OPEN_EXISTING);
  DWORD count = 0;
  char bytes[4];
  EXPECT_TRUE(ReadFile(reading, bytes, 4, &count, nullptr));
  EXPECT_EQ(std::string(bytes, count), "0123");
  EXPECT_EQ(StatusOf(WriteFile(reading, "x", 1, &count, nullptr)), ERROR_ACCESS_DENIED);
  EXPECT_EQ(StatusOf(FlushFileBuffers(reading)), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(CloseHandle(reading));
  const HANDLE writing = Open("f", GENERIC_WRITE, OPEN_EXISTING);
  EXPECT_TRUE(WriteFile(writing, "ab", 2, &count, nullptr));
  EXPECT_EQ(count, 2U);
  EXPECT_TRUE(FlushFileBuffers(writing));
  EXPECT_EQ(StatusOf(ReadFile(writing, bytes, 4, &count, nullptr)), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(SetEndOfFile(writing));
  EXPECT_TRUE(CloseHandle(writing));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "f"), "ab");
}

TEST_F(Files, OnlyAWriterSetsTheEnd) {
  folder.Write("f", "0123456789");
  const HANDLE reading = Open("f", GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(StatusOf(SetEndOfFile(reading)), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(CloseHandle(reading));
}

TEST_F(Files, StreamModesDecideTheFirstBytes) {
  const std::tuple<const TCHAR*, std::string, std::string> rows[] = {
      {_T("wt"), "old", ""},
      {_T("w, ccs=UTF-16LE"), "old", "\xFF\xFE"},
      {_T("w, ccs=UTF-8"), "old", "\xEF\xBB\xBF"},
      {_T("a, ccs=UTF-16LE"), "", "\xFF\xFE"},
      {_T("r+b"), "", ""},
  };
  for (const auto& [mode, before, wanted] : rows) ExpectStream(mode, before, "", wanted);
}

TEST_F(Files, TempFileNamesAreNewFiles) {
  TCHAR path[MAX_PATH];
  const UINT first = GetTempFileNameW(At("").c_str(), _T("kvtest"), 0, path);
  EXPECT_NE(first, 0U);
  EXPECT_EQ(Attributes(path), DWORD(FILE_ATTRIBUTE_NORMAL));
  EXPECT_NE(TextView(path).find(_T("\\kvt")), TextView::npos);
  EXPECT_NE(GetTempFileNameW(At("").c_str(), _T("kvtest"), 0, path), first);
  EXPECT_EQ(StatusOf(GetTempFileNameW(At("none").c_str(), _T("x"), 0, path) != 0U), ERROR_DIRECTORY);
  const DWORD length = GetTempPathW(MAX_PATH, path);
  ASSERT_GT(length, 0U);
  EXPECT_EQ(path[length - 1], '\\');
  EXPECT_EQ(GetTempPathW(length, path), length + 1);
}

TEST_F(Files, TempFileNamesNeedRoomForTheirName) {
  TCHAR path[MAX_PATH];
  EXPECT_EQ(StatusOf(GetTempFileNameW(Text(247, 'x').c_str(), _T("x"), 0, path) != 0U), ERROR_BUFFER_OVERFLOW);
}

TEST_F(Files, CopyReplacesTheTargetOrLeavesIt) {
  folder.Write("from", std::string(1'000'000, 'x'));
  EXPECT_TRUE(CopyFileW(At("from").c_str(), At("to").c_str(), TRUE));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "to"), std::string(1'000'000, 'x'));
  folder.Write("old", "old");
  fs::create_directory(folder.Path() / "sub");
  const std::tuple<const char*, const char*, BOOL, LONG> rows[] = {
      {"from", "old", TRUE, ERROR_FILE_EXISTS},          {"none", "old", FALSE, ERROR_FILE_NOT_FOUND},
      {"none/none", "old", FALSE, ERROR_PATH_NOT_FOUND}, {"sub", "old", FALSE, ERROR_ACCESS_DENIED},
      {"from", "sub", FALSE, ERROR_ACCESS_DENIED},       {"from", "none/to", FALSE, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& [from, to, fail_if_exists, status] : rows)
    EXPECT_EQ(StatusOf(CopyFileW(At(from).c_str(), At(to).c_str(), fail_if_exists)), status) << from << " to " << to;
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), "old");
  EXPECT_TRUE(CopyFileW(At("from").c_str(), At("old").c_str(), FALSE));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 4) << "a temporary file is left";
}

TEST_F(Files, CopyKeepsTheTimeOfTheLastChange) {
  const auto written = fs::file_time_type::clock::now() - std::chrono::hours(1000);
  fs::last_write_time(folder.Write("from", "x"), written);
  EXPECT_TRUE(CopyFileW(At("from").c_str(), At("to").c_str(), TRUE));
  EXPECT_LT(std::chrono::abs(fs::last_write_time(folder.Path() / "to") - written), std::chrono::seconds(1));
}

TEST_F(Files, FoldersAreMadeOneLevelAtATime) {
  EXPECT_EQ(StatusOf(CreateDirectoryW(At("a/b").c_str(), nullptr)), ERROR_PATH_NOT_FOUND);
  EXPECT_TRUE(CreateDirectoryW((At("a") + _T("\\")).c_str(), nullptr));
  EXPECT_EQ(StatusOf(CreateDirectoryW(At("a").c_str(), nullptr)), ERROR_ALREADY_EXISTS);
  folder.Write("a/file", "x");
  EXPECT_EQ(StatusOf(RemoveDirectoryW(At("a").c_str())), ERROR_DIR_NOT_EMPTY);
  EXPECT_TRUE(DeleteFileW(At("a/file").c_str()));
  EXPECT_TRUE(RemoveDirectoryW(At("a").c_str()));
}

TEST_F(Files, NamesLosePointsAndSpacesAtTheirEnd) {
  folder.Write("sub/f", "x");
  for (const LPCTSTR name : {_T("sub\\f."), _T("sub\\f "), _T("SUB.\\f.. ."), _T("sub\\f")})
    EXPECT_EQ(Attributes((At("") + name).c_str()), DWORD(FILE_ATTRIBUTE_NORMAL)) << testing::PrintToString(Text(name));
  EXPECT_TRUE(CloseHandle(Open("sub/new. ", GENERIC_WRITE, CREATE_NEW)));
  EXPECT_TRUE(CreateDirectoryW(At("folder.").c_str(), nullptr));
  EXPECT_TRUE(fs::exists(folder.Path() / "sub/new") && fs::exists(folder.Path() / "folder"));
}

TEST_F(Files, NewNamesHaveNoReservedCharacters) {
  for (const char* name : {"a*", "?a", "a\"b", "<a", "a>b", "a|"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(StatusOf(Open(name, GENERIC_WRITE, CREATE_NEW) != INVALID_HANDLE_VALUE), ERROR_INVALID_NAME);
    EXPECT_EQ(StatusOf(CreateDirectoryW(At(name).c_str(), nullptr)), ERROR_INVALID_NAME);
    EXPECT_EQ(_wfopen(At(name).c_str(), _T("w")), nullptr);
    EXPECT_EQ(StatusOf(GetFileAttributesW(At(name).c_str()) != INVALID_FILE_ATTRIBUTES), ERROR_INVALID_NAME);
  }
}

}  // namespace
