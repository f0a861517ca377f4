// Profile files among other programs: changed from outside, written by several processes, on links, without rights; the
// encodings without a mark, UTF-8, and the status of a cut result.
#include <fcntl.h>
#include <sys/stat.h>

#include <fstream>

#include "tests/child_process.h"
#include "tests/platform/profile_support.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using kvtest::Utf16;
using ProfileOnDisk = kvtest::ProfileTest;

constexpr LPCWSTR kNone = kvtest::kNoValue;

TEST_F(ProfileOnDisk, EncodingsAreKnownByTheirBytes) {
  ExpectFound({
      {"[\xC3\x96l]\n\xC3\x84=1\n", _T("öL"), _T("ä"), _T("1")},
      {"\xEF\xBB\xBF[A]\nk=\xE2\x82\xAC\n", _T("A"), _T("k"), _T("€")},
      {"[A]\nk=a\xFF\xE2\x82\n", _T("A"), _T("k"), _T("a\u00FF\u00E2\u201A")},  // windows-1252
      {"[\xD6l]\n\xC4=\x80\n", _T("öL"), _T("ä"), _T("€")},
      {"\xEF\xBB\xBF[A]\nk=a\xFF\xE2\x82\n", _T("A"), _T("k"), _T("a\xFFFD\xFFFD")},
      {"[\xC3\x96]\nk=\xE4\n", _T("ö"), _T("k"), _T("\xFFFD")},  // two encodings in one file
      {"[\xC5\xBF]\n\xC4\xB1=1\n", _T("ſ"), _T("I"), kNone},
      {"[\xC5\xBF]\n\xC4\xB1=1\n", _T("S"), _T("ı"), kNone},
      {"\xFF\xFE" + Utf16(_T("[A]\nk=1")) + "\x41", _T("A"), _T("k"), _T("1")},
      {Utf16(_T("[A]\nk=1\n")), _T("A"), _T("k"), kNone},
      {"\xFE\xFF\0[\0A\0]\0\n\0k\0=\0001"s, _T("A"), _T("k"), kNone},
      {"[A]\n \t;k=1\n", _T("A"), _T(";k"), kNone},
      // What no documentation says: tabs in arguments, headers without their bracket, NULs, which end what is read.
      {"[A]\nk=1\n", _T("\tA"), _T("k"), kNone},
      {"[A\nk=1\n", _T("A"), _T("k"), _T("1")},
      {"[A]\nk=1\0002\nl=3\n"s, _T("A"), _T("k"), _T("1")},
      {"[A]\nk=1\0002\nl=3\n"s, _T("A"), _T("l"), _T("3")},
      {"[A]\nk\0=1\n\0[B]\n"s, _T("A"), _T("k"), kNone},
      {"\xFF\xFE" + Utf16(_T("[A]\nk=")) + "\x00\xD8"s, _T("A"), _T("k"), _T("\xD800")},  // a lone surrogate
  });
}

TEST_F(ProfileOnDisk, EncodingsStayWhenALineChanges) {
  ExpectChanges({
      {"windows-1252 stays so", "[\xFF\x81]\nk\xE4=\xFC\n[A]\n", _T("A"), _T("ü"), _T("€"),
       "[\xFF\x81]\nk\xE4=\xFC\n[A]\n\xFC=\x80\r\n"},
      {"a name is found in it", "[\xC4]\n\xD6=1\n", _T("ä"), _T("ö"), nullptr, "[\xC4]\n"},
      {"ASCII in a file of two encodings", "[\xC3\x96]\nk=\xE4\n", _T("A"), _T("k"), _T("1"),
       "[\xC3\x96]\nk=\xE4\n[A]\r\nk=1\r\n"},
      {"a UTF-8 mark stays", "\xEF\xBB\xBF[A]\nk=1\n", _T("A"), _T("k"), _T("2"), "\xEF\xBB\xBF[A]\nk=2\r\n"},
      {"half a unit at the end stays there", "\xFF\xFE" + Utf16(_T("[A]")) + "\x41", _T("A"), _T("k"), _T("1"),
       "\xFF\xFE" + Utf16(_T("[A]\r\nk=1\r\n")) + "\x41"},
      {"lone surrogates in UTF-16", "\xFF\xFE" + Utf16(_T("[A]\n")) + "\x00\xD8\n\0"s, _T("A"), _T("k"), _T("\xDC00"),
       "\xFF\xFE" + Utf16(_T("[A]\n")) + "\x00\xD8\n\0"s + Utf16(_T("k=\xDC00\r\n"))},
      {"odd lines stay", "junk\n[A]\nno\n[ ] ]\n\0\n=\nk=1\0x\n\xFF\n"s, _T("A"), _T("m"), _T("2"),
       "junk\n[A]\nno\nm=2\r\n[ ] ]\n\0\n=\nk=1\0x\n\xFF\n"s},
      {"arguments lose spaces only", "", _T(" A "), _T("  k "), _T(" \t1  "), "[A]\r\nk=\t1\r\n"},
      {"a new file is UTF-8", "", _T("Ä"), _T("k"), _T("€"), "[\xC3\x84]\r\nk=\xE2\x82\xAC\r\n"},
  });
}

TEST_F(ProfileOnDisk, TextThatTheEncodingLacksIsRefused) {
  const std::tuple<std::string, LPCWSTR, LONG> rows[] = {
      {"[\xFF]\n", _T("\u0416"), ERROR_NO_UNICODE_TRANSLATION},
      {"[\xC3\x96]\n\xE4\n", _T("ä"), ERROR_NO_UNICODE_TRANSLATION},
      {"[A]\n", _T("\xDCFF"), ERROR_NO_UNICODE_TRANSLATION},
      {"\xFE\xFF" + Utf16(_T("[A]\n")), _T("1"), ERROR_NOT_SUPPORTED},
      {"\xFF\xFE\0\0[\0\0\0"s, _T("1"), ERROR_NOT_SUPPORTED},
      {Utf16(_T("[A]\n")), _T("1"), ERROR_NOT_SUPPORTED},
  };
  for (const auto& [bytes, value, status] : rows) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    Put(bytes);
    EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("k"), value, Path())), status);
    EXPECT_EQ(Bytes(), bytes);
  }
}

TEST_F(ProfileOnDisk, LongNamesAreRefused) {
  const Text at = ProductPathFromSystem((folder.Path() / std::string(300, 'n')).string());
  EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("k"), _T("v"), at.c_str())), ERROR_FILENAME_EXCED_RANGE);
}

TEST_F(ProfileOnDisk, CutResultsSetTheStatus) {
  Put("[Sec]\nkey=value\n");
  TCHAR buffer[12];
  EXPECT_EQ(StatusOf(GetPrivateProfileSectionW(_T("none"), buffer, 12, Path()) != 0U), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(List(_T("none")), _T("")) << "a list has no default";
  EXPECT_EQ(StatusOf(GetPrivateProfileStringW(_T("sec"), _T("key"), nullptr, buffer, 5, Path()) != 4U),
            ERROR_MORE_DATA);
  EXPECT_EQ(StatusOf(GetPrivateProfileSectionW(_T("sec"), buffer, 10, Path()) != 8U), ERROR_MORE_DATA);
  EXPECT_EQ(GetPrivateProfileStringW(_T("A"), _T("k"), nullptr, buffer, 9, (Text(path) + _T("\\")).c_str()), 0U);
  EXPECT_EQ(StatusOf(GetPrivateProfileStringW(_T("A"), _T("k"), nullptr, buffer, 9,
                                              ProductPathFromSystem(folder.Path().string()).c_str()) != 0U),
            ERROR_ACCESS_DENIED)
      << "a folder";
}

// ---- other programs

// Each change keeps the file's size, most happen within one step of the file system's clock, and some put the time
// back.
TEST_F(ProfileOnDisk, SeesEachChangeFromOutside) {
  for (const fs::path& where : {kvtest::FastFolder(), fs::temp_directory_path()}) {
    const kvtest::ScratchFolder scratch(where);
    const fs::path changed = scratch.Path() / "x.ini";
    const Text at = ProductPathFromSystem(changed.string());
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    for (int i = 1000; i < 2000; ++i) {
      const std::string bytes = "[A]\nk=" + std::to_string(i) + "\n";
      if (i % 3 == 0) {
        scratch.Write("new", bytes);
        fs::rename(scratch.Path() / "new", changed);
      } else {
        scratch.Write("x.ini", bytes);
      }
      if (i % 2 == 0) {
        ASSERT_EQ(utimensat(AT_FDCWD, changed.c_str(), times, 0), 0);
      }
      ASSERT_EQ(Number(at), i) << changed;
      // Long enough for the file to count as left alone.
      for (int again = 0; i == 1500 && again < 60'000; ++again) ASSERT_EQ(Number(at), i);
    }
    fs::remove(changed);
    EXPECT_EQ(Number(at), -1);
  }
}

TEST_F(ProfileOnDisk, WritersInSeveralProcessesLoseNothing) {
  constexpr int kWriters = 4, kKeys = 40;
  std::vector<pid_t> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(kvtest::InChild([&] {
      for (int i = 0; i < kKeys; ++i) {
        const std::string key = std::to_string(writer) + "." + std::to_string(i);
        const Text wide(key.begin(), key.end());
        if (!WritePrivateProfileStringW(_T("A"), wide.c_str(), wide.c_str(), Path())) return false;
        if (Value(_T("a"), wide.c_str()) != wide) return false;
      }
      return true;
    }));
  }
  for (const pid_t writer : writers) EXPECT_EQ(kvtest::ExitCode(writer), 0);
  const Text list = List(_T("A"));
  EXPECT_EQ(std::count(list.begin(), list.end(), _T('|')), kWriters * kKeys) << Bytes();
}

TEST_F(ProfileOnDisk, LinksAreFollowedAndStay) {
  fs::create_symlink("real.ini", file);
  EXPECT_TRUE(WritePrivateProfileStringW(_T("A"), _T("k"), _T("3"), Path()));
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "real.ini"), "[A]\r\nk=3\r\n");
  fs::remove(file);
  fs::create_symlink("f.ini", file);
  EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("k"), _T("4"), Path())), ERROR_CANT_RESOLVE_FILENAME);
}

TEST_F(ProfileOnDisk, PipesAndDevicesAreNotRead) {
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  for (const LPCWSTR name : {Path(), _T("\\dev\\zero")}) {
    EXPECT_EQ(StatusOf(Number(name) != -1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("k"), _T("1"), name)), ERROR_ACCESS_DENIED);
  }
}

TEST_F(ProfileOnDisk, MissingRightsRefuseAndLeaveTheFile) {
  Put("[A]\nk=1\n");
  const struct {
    const char* what;
    mode_t folder_mode;
    mode_t file_mode;
    int read;
  } rows[] = {{"closed folder", 0700, 0666, -1},
              {"folder to read only", 0755, 0666, 1},
              {"file of somebody else's", 0777, 0600, -1},
              {"read-only file", 0777, 0444, 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    ASSERT_EQ(chmod(file.c_str(), row.file_mode), 0);
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

TEST_F(ProfileOnDisk, HugeLinesAndFilesAreBounded) {
  const std::string wide(30 << 20, 'x');
  Put("[A]\nk=" + wide + "\nl=2\n");
  EXPECT_EQ(Value(_T("A"), _T("l")), _T("2"));
  EXPECT_EQ(Value(_T("A"), _T("k")), Text(999, _T('x')));
  fs::resize_file(file, std::uintmax_t(5) << 30);  // sparse, one line without an end
  EXPECT_EQ(StatusOf(Value(_T("A"), _T("l")) != kNone), ERROR_FILE_TOO_LARGE);
  EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("l"), _T("3"), Path())), ERROR_FILE_TOO_LARGE);
  EXPECT_EQ(fs::file_size(file), std::uintmax_t(5) << 30);
}

}  // namespace
