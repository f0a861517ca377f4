// The mapping of product paths onto the system's, and files written beside and renamed.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "framework/text.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/safe_file.h"
#include "tests/child_process.h"
#include "tests/scratch.h"

namespace {

class Mapping : public testing::Test {
 protected:
  Mapping() { setenv("KV_DRIVE_C", (folder.Path() / "drive").c_str(), 1); }
  ~Mapping() override { unsetenv("KV_DRIVE_C"); }
  std::string Drive(const std::string& name) const { return (folder.Path() / "drive").string() + name; }

  kvtest::ScratchFolder folder;
};

TEST_F(Mapping, GoesToTheDriveFolderAndBackAndLooksUpWithoutCase) {
  folder.Write("drive/Program Files/Größe/Data.TXT", "x");
  folder.Write("drive/twins/A", "x");
  folder.Write("drive/twins/a", "x");
  const std::pair<const TCHAR*, std::string> rows[] = {
      {_T("C:\\Program Files\\Größe\\Data.TXT"), Drive("/Program Files/Größe/Data.TXT")},
      {_T("c:/PROGRAM files/GRÖSSE/x"), Drive("/Program Files/GRÖSSE/x")},
      {_T("C:\\program files\\GRöße\\DATA.txt"), Drive("/Program Files/Größe/Data.TXT")},
      {_T("C:\\program files\\new folder\\"), Drive("/Program Files/new folder/")},
      {_T("\\\\?\\C:\\Twins\\a"), Drive("/twins/a")},
      {_T("C:\\TWINS\\A"), Drive("/twins/A")},
      {_T("C:\\"), Drive("/")},
      {_T("\\dev\\NULL"), "/dev/null"},
      {nullptr, ""},
  };
  for (const auto& [path, wanted] : rows) EXPECT_EQ(SystemPathFromProduct(path), wanted);
  EXPECT_EQ(ProductPathFromSystem("/usr/lib/x.so"), u"\\usr\\lib\\x.so");
  EXPECT_EQ(ProductPathFromSystem(Drive("/KV/x")), u"C:\\KV\\x");
  EXPECT_EQ(ProductPathFromSystem(Drive("")), u"C:\\");
  EXPECT_EQ(ProductPathFromSystem("sub/größe"), u"sub\\größe");
  EXPECT_EQ(ProductPathFromSystem("C:\\already"), u"C:\\already");
  EXPECT_TRUE(ProductPathFromSystem(Drive("s/x")).starts_with(u"\\")) << "only the name's beginning is the drive's";
}

TEST_F(Mapping, KeepsNamesThatAreNotUtf8Apart) {
  for (const std::string name : {"x\xFE", "x\xFF", "x\xEF\xBF\xBD", "\xC3", "\xC3\xA4", "\xED\xA0\x80",
                                 "\xC0\xAF\xE2\x82", "\x80", "a\xF0\x9F\x98\x80\xF0"}) {
    const std::u16string path = ProductPathFromSystem(Drive("/odd/" + name));
    EXPECT_EQ(SystemPathFromProduct(path.c_str()), Drive("/odd/" + name)) << "before there is one of its own";
    folder.Write("drive/odd/" + name, "");
    EXPECT_EQ(SystemPathFromProduct(path.c_str()), Drive("/odd/" + name));
  }
  EXPECT_EQ(ProductPathFromSystem("x\xFF\xE2\x82"), std::u16string({u'x', 0xDCFF, 0xDCE2, 0xDC82}));
  EXPECT_EQ(SystemPathFromProduct(std::u16string({u'y', 0xD800, 0xDC7F, u'z', 0xDD00}).c_str()),
            "y\xF0\x90\x81\xBFz\xEF\xBF\xBD");
  setenv("KV_ODD", "/a\xFF", 1);
  TCHAR value[9];
  EXPECT_EQ(GetEnvironmentVariableW(_T("KV_ODD"), value, 9), 3U);
  EXPECT_EQ(value, std::u16string({u'/', u'a', 0xDCFF}));
  EXPECT_TRUE(SetEnvironmentVariableW(_T("KV_ODD"), value));
  EXPECT_STREQ(std::getenv("KV_ODD"), "/a\xFF");
  unsetenv("KV_ODD");
}

// A large folder's names are remembered after the second search.
TEST_F(Mapping, SearchesInALargeFolderSeeEveryChange) {
  namespace fs = std::filesystem;
  const auto look = [this](const std::u16string& name) {
    return SystemPathFromProduct((u"C:\\large\\" + name).c_str()).substr(Drive("/large/").size());
  };
  const auto write = [this](const std::string& name) { folder.Write("drive/large/" + name, ""); };
  const auto fill = [&](int from, int to) {
    write("seed");
    for (int i = from; i < to; ++i)
      fs::create_hard_link(Drive("/large/seed"), Drive("/large/File" + std::to_string(i)));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(look(u"FILE7"), "File7");
  };
  fill(0, 200);
  fs::rename(Drive("/large/File7"), Drive("/large/Other"));
  EXPECT_EQ(look(u"FILE7"), "FILE7");
  EXPECT_EQ(look(u"OTHER"), "Other");
  fs::remove(Drive("/large/File8"));
  EXPECT_EQ(look(u"FILE8"), "FILE8");
  write("größe");
  EXPECT_EQ(look(u"GRÖßE"), "größe");
  write("FIle9");
  EXPECT_EQ(look(u"file9"), "FIle9") << "the first of two";
  fs::remove(Drive("/large/FIle9"));
  EXPECT_EQ(look(u"file9"), "File9");
  EXPECT_TRUE(kvtest::IsTrueInChild([&] {
    write("Child");
    return look(u"CHILD") == "Child" && look(u"OTHER") == "Other";
  }));
  EXPECT_EQ(look(u"CHILD"), "Child") << "what another process made";
  fs::rename(Drive("/large"), Drive("/aside"));
  EXPECT_EQ(look(u"OTHER"), "OTHER");
  write("oTHER");
  EXPECT_EQ(look(u"OTHER"), "oTHER") << "another folder of that name";
  fs::remove_all(Drive("/large"));
  EXPECT_EQ(look(u"OTHER"), "OTHER");
  fill(0, 200);
  fill(200, 17'000);  // more than the system has told of at once
  EXPECT_EQ(look(u"FILE16999"), "File16999");
}

// A folder that has not changed for some time is remembered by the time of its last change.
TEST_F(Mapping, SearchesInASettledFolderSeeEveryChange) {
  namespace fs = std::filesystem;
  static const Clock later = {nullptr, nullptr, [] { return std::time(nullptr) + 3600; }};
  const auto look = [](LPCTSTR name) { return SystemPathFromProduct((CString(_T("C:\\small\\")) + name)); };
  const auto settle = [this] {
    fs::last_write_time(Drive("/small"), fs::file_time_type::clock::now() - std::chrono::hours(1));
  };
  folder.Write("drive/small/One", "");
  SetCurrentClock(&later);
  settle();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(look(_T("ONE")), Drive("/small/One"));
  fs::rename(Drive("/small/One"), Drive("/small/Two"));
  EXPECT_EQ(look(_T("TWO")), Drive("/small/Two"));
  settle();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(look(_T("ONE")), Drive("/small/ONE"));
  SetCurrentClock(nullptr);
}

TEST_F(Mapping, DriveFolderIsMadeAndDefaultsToTheUsersData) {
  EXPECT_FALSE(CreateDirectoryW(_T("C:\\a\\b"), nullptr));
  EXPECT_TRUE(CreateDirectoryW(_T("C:\\a"), nullptr));
  EXPECT_TRUE(std::filesystem::is_directory(Drive("/a")));
  setenv("XDG_DATA_HOME", "/data/home", 1);
  EXPECT_EQ(SystemPathFromProduct(_T("D:\\x")), "/data/home/kestrova/drive_d/x");
  unsetenv("XDG_DATA_HOME");
  const std::string home = std::getenv("HOME");
  EXPECT_EQ(SystemPathFromProduct(_T("d:\\x")), home + "/.local/share/kestrova/drive_d/x");
}

class Safe : public Mapping {
 protected:
  Safe() { std::filesystem::create_directories(Drive("")); }
  // The names in the drive's folder.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Drive(""))) names.push_back(entry.path().filename());
    return names;
  }
};

TEST_F(Safe, ReplacesInOneStepAndKeepsRightsAndLinks) {
  folder.Write("drive/real", "old");
  chmod(Drive("/real").c_str(), 0640);
  std::filesystem::create_symlink("real", Drive("/link"));
  const std::string big(200'000, 'x');
  EXPECT_TRUE(SafeFile(_T("C:\\link")).Write(big)) << "without Commit nothing changes";
  EXPECT_EQ(Names().size(), 2U);
  {
    SafeFile file(_T("C:\\LINK"));
    EXPECT_TRUE(file.Write("head"));
    EXPECT_TRUE(file.Write(big));
    EXPECT_EQ(kvtest::ReadFile(Drive("/real")), "old");
    EXPECT_TRUE(file.Commit()) << file.Reason();
  }
  EXPECT_EQ(kvtest::ReadFile(Drive("/real")), "head" + big);
  EXPECT_TRUE(std::filesystem::is_symlink(Drive("/link")));
  struct stat facts;
  ASSERT_EQ(stat(Drive("/real").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 07777, 0640U);
  EXPECT_EQ(Names().size(), 2U);
}

TEST_F(Safe, ListenerHearsHowManyBytesAreWritten) {
  static std::vector<ULONGLONG> told;
  {
    const SafeFileProgress listener([](ULONGLONG bytes) { told.push_back(bytes); });
    SafeFile file(_T("C:\\f"));
    EXPECT_TRUE(file.Write(std::string(100'000, 'x')) && file.Write("end") && file.Commit()) << file.Reason();
  }
  EXPECT_EQ(WriteFileSafely(_T("C:\\f"), "nobody listens"), ERROR_SUCCESS);
  EXPECT_EQ(told, (std::vector<ULONGLONG>{100'000, 100'003}));
}

TEST_F(Safe, FailuresComeWithAReasonAndLeaveNothing) {
  folder.Write("drive/locked", "old");
  chmod(Drive("/locked").c_str(), 0444);
  ASSERT_EQ(mkfifo(Drive("/pipe").c_str(), 0666), 0);
  const std::tuple<const TCHAR*, LONG, std::string> rows[] = {
      {_T("C:\\locked"), ERROR_ACCESS_DENIED, "cannot write " + Drive("/locked") + ": access denied"},
      {_T("C:\\pipe"), ERROR_ACCESS_DENIED, "cannot write " + Drive("/pipe") + ": access denied"},
      {_T("C:\\none\\f"), ERROR_PATH_NOT_FOUND, "cannot write " + Drive("/none/f") + ": the folder does not exist"},
      {_T(""), ERROR_PATH_NOT_FOUND, "cannot write : the folder does not exist"},
  };
  for (const auto& [path, status, reason] : rows) {
    SafeFile file(path);
    EXPECT_FALSE(file.Write("new"));
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(file.FirstError(), status);
    EXPECT_EQ(file.Reason(), reason);
  }
  EXPECT_EQ(kvtest::ReadFile(Drive("/locked")), "old");
  EXPECT_TRUE(std::filesystem::is_fifo(Drive("/pipe")));
  EXPECT_EQ(Names().size(), 2U);
}

// A folder that the disk refuses to flush.
bool g_folders_fail = false;

}  // namespace

extern "C" [[gnu::visibility("default")]] int fsync(int descriptor) {
  struct stat facts;
  if (g_folders_fail && fstat(descriptor, &facts) == 0 && S_ISDIR(facts.st_mode)) {
    errno = EIO;
    return -1;
  }
  return int(syscall(SYS_fsync, descriptor));
}

namespace {

TEST_F(Safe, FolderThatCannotBeFlushedIsToldFromAFailedWrite) {
  g_folders_fail = true;
  SafeFile file(_T("C:\\f"));
  EXPECT_TRUE(file.Write("new"));
  EXPECT_FALSE(file.Commit());
  EXPECT_TRUE(file.IsReplaced());
  EXPECT_EQ(WriteFileSafely(_T("C:\\f"), "new"), kWrittenButNotFlushed);
  EXPECT_EQ(GetLastError(), DWORD(kWrittenButNotFlushed));
  g_folders_fail = false;
  EXPECT_EQ(file.Reason(), Drive("/f") +
                               " is written, but may be the old file again after a power failure: "
                               "the disk failed while reading or writing");
  EXPECT_EQ(kvtest::ReadFile(Drive("/f")), "new");
}

TEST_F(Safe, TemporaryFilesOfDeadProcessesAreRemoved) {
  std::vector<pid_t> children;
  const kvtest::SharedNumber open;
  for (int i = 0; i < 3; ++i) {
    children.push_back(kvtest::InChild([&] {
      SafeFile file(_T("C:\\f"));
      file.Write(std::string(200'000, 's'));
      for (++*open;;) pause();
      return false;
    }));
    while (*open <= i) usleep(1000);
  }
  EXPECT_EQ(Names().size(), 3U);
  for (const int dead : {0, 2}) {
    kill(children[std::size_t(dead)], SIGKILL);
    kvtest::ExitCode(children[std::size_t(dead)]);
  }
  EXPECT_EQ(WriteFileSafely(_T("C:\\f"), "new"), ERROR_SUCCESS);
  EXPECT_EQ(Names().size(), 2U) << "the file, and that of the living process";
  kill(children[1], SIGKILL);
  kvtest::ExitCode(children[1]);
  EXPECT_EQ(WriteFileSafely(_T("C:\\f"), "new"), ERROR_SUCCESS);
  EXPECT_EQ(Names(), std::vector<std::string>{"f"});
}

// The limit on a file's size stands for a full disk: writing fails in the middle.
TEST_F(Safe, DiskThatFillsUpLeavesTheOldFile) {
  const std::string name(250, 'n');  // a file beside it can't have the whole name
  const std::u16string path = u"C:\\" + std::u16string(250, 'n');
  EXPECT_EQ(WriteFileSafely(path.c_str(), "old"), ERROR_SUCCESS);
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old = {};
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small = {100'000, old.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const LONG status = WriteFileSafely(path.c_str(), std::string(300'000, 'x'));
  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(status, ERROR_FILE_TOO_LARGE);
  EXPECT_EQ(kvtest::ReadFile(Drive("/" + name)), "old");
  EXPECT_EQ(Names(), std::vector<std::string>{name});
}

}  // namespace
