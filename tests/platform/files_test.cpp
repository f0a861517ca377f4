// Files and folders: the calls as their descriptions have them, by the product's paths.
#include "platform/files.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/scratch.h"

namespace {

class Files : public testing::Test {
 protected:
  // The product path of a name in the scratch folder.
  std::u16string At(const std::string& name) const { return ProductPathFromSystem((folder.Path() / name).string()); }

  kvtest::ScratchFolder folder;
};

TEST_F(Files, AttributesTellFileFolderAndReadOnly) {
  folder.Write("plain.txt", "x");
  folder.Write("locked.txt", "x");
  ASSERT_EQ(_wchmod(At("locked.txt").c_str(), _S_IREAD), 0);
  const struct {
    const char* name;
    DWORD wanted;
    DWORD status;
  } rows[] = {
      {"plain.txt", FILE_ATTRIBUTE_NORMAL, 0},
      {"locked.txt", FILE_ATTRIBUTE_READONLY, 0},
      {"", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"missing.txt", INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND},
      {"missing/file.txt", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SetLastError(0);
    EXPECT_EQ(GetFileAttributesW(At(row.name).c_str()), row.wanted);
    EXPECT_EQ(GetLastError(), row.status);
  }
  EXPECT_EQ(GetFileAttributesW(nullptr), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributesW(_T("")), INVALID_FILE_ATTRIBUTES);
}

TEST_F(Files, AccessAnswersForTheReadOnlyMark) {
  folder.Write("a", "x");
  const std::u16string path = At("a");
  for (const int mark : {_S_IREAD | _S_IWRITE, _S_IREAD, _S_IWRITE}) {
    ASSERT_EQ(_wchmod(path.c_str(), mark), 0);
    for (const int mode : {0, 2, 4, 6}) {
      const bool refused = (mode & 2) != 0 && (mark & _S_IWRITE) == 0;
      errno = 0;
      EXPECT_EQ(_waccess(path.c_str(), mode), refused ? -1 : 0) << mark << " " << mode;
      EXPECT_EQ(errno, refused ? EACCES : 0);
    }
  }
  EXPECT_EQ(_waccess(At("b").c_str(), 0), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(Files, ReadOnlyFileIsNeitherWrittenNorDeletedNorReplaced) {
  folder.Write("old", "kept");
  folder.Write("new", "x");
  const std::u16string path = At("old");
  ASSERT_EQ(_wchmod(path.c_str(), _S_IREAD), 0);
  EXPECT_FALSE(DeleteFileW(path.c_str()));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
  EXPECT_EQ(_wremove(path.c_str()), -1);
  EXPECT_EQ(_wfopen(path.c_str(), _T("w")), nullptr);
  EXPECT_EQ(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr), INVALID_HANDLE_VALUE);
  EXPECT_FALSE(MoveFileExW(At("new").c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "old"), "kept");
}

TEST_F(Files, FoldersAreMadeOneLevelAtATime) {
  EXPECT_FALSE(CreateDirectoryW(At("a/b").c_str(), nullptr));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_PATH_NOT_FOUND));
  EXPECT_TRUE(CreateDirectoryW((At("a") + u"\\").c_str(), nullptr));
  EXPECT_FALSE(CreateDirectoryW(At("a").c_str(), nullptr));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(_wmkdir(At("a/b").c_str()), 0);
  EXPECT_EQ(_wmkdir(At("a/b").c_str()), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_FALSE(RemoveDirectoryW(At("a").c_str()));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_DIRECTORY_NOT_EMPTY));
  EXPECT_FALSE(DeleteFileW(At("a/b").c_str()));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
  EXPECT_TRUE(RemoveDirectoryW(At("a/b").c_str()));
  folder.Write("file", "x");
  EXPECT_FALSE(RemoveDirectoryW(At("file").c_str()));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_DIRECTORY));
}

TEST_F(Files, MoveReplacesOnlyWhenAsked) {
  folder.Write("a", "1");
  folder.Write("b", "2");
  EXPECT_FALSE(MoveFileExW(At("a").c_str(), At("b").c_str(), 0));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ALREADY_EXISTS));
  EXPECT_TRUE(MoveFileExW(At("a").c_str(), At("b").c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "b"), "1");
  EXPECT_FALSE(MoveFileExW(At("a").c_str(), At("c").c_str(), 0));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(MoveFileExW(At("b").c_str(), At("B").c_str(), 0));
  EXPECT_EQ(std::filesystem::directory_iterator(folder.Path())->path().filename(), "B");
}

TEST_F(Files, DispositionDecidesWhatOpeningDoes) {
  constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
  const struct {
    DWORD disposition;
    bool exists;
    DWORD status;  // what GetLastError answers afterwards
    int size;      // of the file afterwards, -1 if opening fails
  } rows[] = {
      {CREATE_NEW, false, 77, 0},
      {CREATE_NEW, true, ERROR_FILE_EXISTS, -1},
      {CREATE_ALWAYS, false, 0, 0},
      {CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, 0},
      {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, -1},
      {OPEN_EXISTING, true, 77, 3},
      {OPEN_ALWAYS, false, 0, 0},
      {OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, 3},
      {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, -1},
      {TRUNCATE_EXISTING, true, 77, 0},
      {9, true, ERROR_INVALID_PARAMETER, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.disposition << (row.exists ? " on a file" : " on none"));
    std::filesystem::remove(folder.Path() / "f");
    if (row.exists) folder.Write("f", "abc");
    SetLastError(77);
    const HANDLE file = CreateFileW(At("f").c_str(), kBoth, 0, nullptr, row.disposition, 0, nullptr);
    EXPECT_EQ(GetLastError(), row.status);
    EXPECT_EQ(file == INVALID_HANDLE_VALUE, row.size < 0);
    if (row.size < 0) continue;
    LARGE_INTEGER size = {};
    EXPECT_TRUE(GetFileSizeEx(file, &size));
    EXPECT_EQ(size.QuadPart, row.size);
    EXPECT_TRUE(CloseHandle(file));
  }
}

TEST_F(Files, HandleReadsWritesSeeksAndCuts) {
  const HANDLE file = CreateFileW(At("f").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10U);
  LARGE_INTEGER distance = {};
  LARGE_INTEGER position = {};
  distance.QuadPart = -4;
  EXPECT_TRUE(SetFilePointerEx(file, distance, &position, FILE_END));
  EXPECT_EQ(position.QuadPart, 6);
  char bytes[8] = {};
  EXPECT_TRUE(ReadFile(file, bytes, 8, &count, nullptr));
  EXPECT_EQ(std::string(bytes, count), "6789");
  EXPECT_TRUE(ReadFile(file, bytes, 8, &count, nullptr));
  EXPECT_EQ(count, 0U);
  distance.QuadPart = -11;
  EXPECT_FALSE(SetFilePointerEx(file, distance, nullptr, FILE_CURRENT));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_NEGATIVE_SEEK));
  distance.QuadPart = 3;
  EXPECT_TRUE(SetFilePointerEx(file, distance, nullptr, FILE_BEGIN));
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_TRUE(FlushFileBuffers(file));
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "f"), "012");
  EXPECT_FALSE(CloseHandle(file));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
  const HANDLE next = CreateFileW(At("f").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_NE(next, file);
  EXPECT_FALSE(ReadFile(file, bytes, 1, &count, nullptr)) << "a closed handle reads the next file";
  EXPECT_FALSE(WriteFile(next, "x", 1, &count, nullptr));
  EXPECT_TRUE(CloseHandle(next));
  for (const HANDLE wrong : {HANDLE(nullptr), INVALID_HANDLE_VALUE, HANDLE(&count)}) EXPECT_FALSE(CloseHandle(wrong));
  EXPECT_EQ(CreateFileW(At("").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
}

TEST_F(Files, StreamModesOfThePlatformWork) {
  for (const TCHAR* mode : {_T("wt"), _T("wb"), _T("w+tN"), _T("wt, ccs=UTF-8"), _T("ab")}) {
    FILE* file = _wfopen(At("f").c_str(), mode);
    ASSERT_NE(file, nullptr) << testing::PrintToString(std::u16string(mode));
    std::fputs("a\n", file);
    EXPECT_EQ(std::fclose(file), 0);
  }
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "f"), "a\na\n");
  for (const TCHAR* mode : {_T(""), _T("q"), _T("b"), _T("rz"), _T("rx")}) {
    errno = 0;
    EXPECT_EQ(_wfopen(At("f").c_str(), mode), nullptr);
    EXPECT_EQ(errno, EINVAL);
  }
  EXPECT_EQ(_wfopen(At("f").c_str(), _T("wx")), nullptr);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(_wfopen(At("").c_str(), _T("r")), nullptr);
  EXPECT_EQ(_wfopen(nullptr, _T("r")), nullptr);
}

TEST_F(Files, Utf16StreamsOfNewFilesBeginWithTheMark) {
  const struct {
    const TCHAR* mode;
    std::string before;
    std::string wanted;
  } rows[] = {
      {_T("w, ccs=UTF-16LE"), "old", "\xFF\xFE"},
      {_T("w+b,ccs=utf-16le "), "", "\xFF\xFE"},
      {_T("w, ccs=UNICODE"), "", "\xFF\xFE"},
      {_T("a, ccs=UTF-16LE"), "", "\xFF\xFE"},
      {_T("a, ccs=UTF-16LE"), "old", "old"},
      {_T("r+, ccs=UTF-16LE"), "", ""},
      {_T("w, ccs=UTF-8"), "", ""},
      {_T("w, ccs="), "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.mode)));
    folder.Write("f", row.before);
    FILE* file = _wfopen(At("f").c_str(), row.mode);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(kvtest::ReadFile(folder.Path() / "f"), row.wanted);
    EXPECT_EQ(std::fclose(file), 0);
  }
}

TEST_F(Files, TempFileNamesAreNewFiles) {
  TCHAR a[MAX_PATH];
  TCHAR b[MAX_PATH];
  const UINT first = GetTempFileNameW(At("").c_str(), _T("kvtest"), 0, a);
  const UINT second = GetTempFileNameW(At("").c_str(), _T("kvtest"), 0, b);
  EXPECT_NE(first, 0U);
  EXPECT_NE(first, second);
  EXPECT_EQ(GetFileAttributesW(a), FILE_ATTRIBUTE_NORMAL);
  EXPECT_TRUE(std::u16string_view(a).ends_with(_T(".tmp")));
  EXPECT_NE(std::u16string_view(a).find(_T("\\kvt")), std::u16string_view::npos);
  EXPECT_EQ(GetTempFileNameW(At("").c_str(), _T("x"), 0x1A2B, a), 0x1A2BU);
  EXPECT_TRUE(std::u16string_view(a).ends_with(_T("\\x1a2b.tmp")));
  EXPECT_EQ(GetFileAttributesW(a), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetTempFileNameW(At("none").c_str(), _T("x"), 0, a), 0U);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_DIRECTORY));
  EXPECT_EQ(GetTempFileNameW(std::u16string(247, 'x').c_str(), _T("x"), 0, a), 0U);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_BUFFER_OVERFLOW));
}

}  // namespace
