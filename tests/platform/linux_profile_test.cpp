// Profile files among other programs: changed from outside, written by several processes, on links, without rights.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/child_process.h"
#include "tests/platform/profile_support.h"

namespace {

namespace fs = std::filesystem;
using ProfileOnDisk = kvtest::ProfileTest;

// Each change keeps the file's size, most happen within one step of the file system's clock, and some put the time
// back.
TEST_F(ProfileOnDisk, SeesEachChangeFromOutside) {
  for (const fs::path& where : {kvtest::FastFolder(), fs::temp_directory_path()}) {
    const kvtest::ScratchFolder scratch(where);
    const fs::path file = scratch.Path() / "x.ini";
    const std::u16string at = ProductPathFromSystem(file.string());
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    for (int i = 1000; i < 2000; ++i) {
      const std::string bytes = "[A]\nk=" + std::to_string(i) + "\n";
      if (i % 3 == 0) {
        scratch.Write("new", bytes);
        fs::rename(scratch.Path() / "new", file);
      } else {
        scratch.Write("x.ini", bytes);
      }
      if (i % 2 == 0) {
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
      }
      ASSERT_EQ(Number(at), i) << file;
      // Long enough for the file to count as left alone.
      for (int again = 0; i == 1500 && again < 60'000; ++again) ASSERT_EQ(Number(at), i);
    }
    fs::remove(file);
    EXPECT_EQ(Number(at), -1);
  }
}

TEST_F(ProfileOnDisk, WritersInSeveralProcessesLoseNothing) {
  constexpr int kWriters = 4;
  constexpr int kKeys = 40;
  std::vector<pid_t> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(kvtest::InChild([&] {
      for (int i = 0; i < kKeys; ++i) {
        const std::string key = std::to_string(writer) + "." + std::to_string(i);
        const std::u16string wide(key.begin(), key.end());
        if (!WritePrivateProfileStringW(_T("A"), wide.c_str(), wide.c_str(), Path())) return false;
        if (Value(_T("a"), wide.c_str()) != wide) return false;
      }
      return true;
    }));
  }
  for (const pid_t writer : writers) EXPECT_EQ(kvtest::ExitCode(writer), 0);
  const std::u16string list = List(_T("A"));
  EXPECT_EQ(std::count(list.begin(), list.end(), u'|'), kWriters * kKeys) << Bytes();
}

TEST_F(ProfileOnDisk, LinksAreFollowedAndStay) {
  fs::create_symlink("real.ini", folder.Path() / "f.ini");
  EXPECT_TRUE(WritePrivateProfileStringW(_T("A"), _T("k"), _T("3"), Path()));
  EXPECT_TRUE(fs::is_symlink(folder.Path() / "f.ini"));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "real.ini"), "[A]\r\nk=3\r\n");
  fs::remove(folder.Path() / "f.ini");
  fs::create_symlink("f.ini", folder.Path() / "f.ini");
  EXPECT_FALSE(WritePrivateProfileStringW(_T("A"), _T("k"), _T("4"), Path()));
  EXPECT_EQ(GetLastError(), DWORD(ERROR_CANT_RESOLVE_FILENAME));
}

TEST_F(ProfileOnDisk, PipesAndDevicesAreNotRead) {
  ASSERT_EQ(mkfifo((folder.Path() / "f.ini").c_str(), 0600), 0);
  for (const LPCWSTR name : {Path(), _T("\\dev\\zero")}) {
    SetLastError(0);
    EXPECT_EQ(Number(name), -1);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(WritePrivateProfileStringW(_T("A"), _T("k"), _T("1"), name));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
  }
}

TEST_F(ProfileOnDisk, MissingRightsRefuseAndLeaveTheFile) {
  Put("[A]\nk=1\n");
  const struct {
    const char* what;
    mode_t folder_mode;
    mode_t file_mode;
    int read;
  } rows[] = {
      {"closed folder", 0700, 0666, -1},
      {"folder to read only", 0755, 0666, 1},
      {"file of somebody else's", 0777, 0600, -1},
      {"read-only file", 0777, 0444, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    ASSERT_EQ(chmod((folder.Path() / "f.ini").c_str(), row.file_mode), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), row.folder_mode), 0);
    if (getuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    EXPECT_TRUE(kvtest::IsTrueInChild([&] {
      if (setgid(65534) != 0 || setuid(65534) != 0) return false;
      SetLastError(0);
      return Number(path) == row.read && !WritePrivateProfileStringW(_T("A"), _T("k"), _T("2"), Path()) &&
             GetLastError() == ERROR_ACCESS_DENIED;
    }));
    EXPECT_EQ(Bytes(), "[A]\nk=1\n");
    const auto entries = fs::directory_iterator(folder.Path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
  }
}

}  // namespace
