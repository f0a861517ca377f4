// Files and folders on a full disk, without rights, with names that are too long, and paths with "..": the results, and
// that no file is incomplete. Some cases run in a child process, which can give up its rights.
#include <sched.h>
#include <sys/mount.h>

#include "share/utilities/ascii_file_browse.h"
#include "share/utilities/file_helpers.h"
#include "tests/child_process.h"
#include "tests/utilities/files_fixture.h"

namespace {

namespace fs = std::filesystem;

constexpr int kCannot = 77;  // exit code of a child that cannot set up the case

class HostileFiles : public kvtest::FilesTest {
 protected:
  // Runs the body in a child process and fails if its expectations fail. False if the child could not set up the case.
  static bool InChild(const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0) _exit(!body() ? kCannot : HasFailure());
    const int code = kvtest::ExitCode(child);
    EXPECT_TRUE(code == 0 || code == kCannot) << "the child's expectations failed";
    return code != kCannot;
  }
  // Mounts a file system of that size for the child only.
  bool MountSmall(const char* name, const char* size) const {
    fs::create_directory(On(name));
    return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", On(name).c_str(), "tmpfs", 0, size) == 0;
  }
};

TEST_F(HostileFiles, FullDiskLeavesNothingHalfWritten) {
  folder.Write("from/a_small", "small");
  folder.Write("from/big", std::string(2'000'000, 'x'));
  folder.Write("from/sub/small", "small");
  const bool mounted = InChild([&] {
    if (!MountSmall("disk", "size=1m")) return false;
    folder.Write("disk/to/big", "old");
    EXPECT_EQ(files.CopyDirectoryWithContents(At("from"), At("disk/to")), 0);
    EXPECT_EQ(Tree("disk"), "to/ to/a_small=small to/big=old to/sub/ to/sub/small=small ");
    return true;
  });
  if (!mounted) GTEST_SKIP() << "this user may not mount a small disk";
}

TEST_F(HostileFiles, FolderWithoutRightsIsLeftAlone) {
  folder.Write("shut/file", "x");
  folder.Write("read/file", "x");
  folder.Write("mine/shut/file", "x");
  folder.Write("mine/own", "x");
  fs::permissions(folder.Path(), fs::perms(0777));
  fs::permissions(On("mine"), fs::perms(0777));
  for (const char* shut : {"shut", "mine/shut"}) fs::permissions(On(shut), fs::perms(0));
  fs::permissions(On("read"), fs::perms(0555));
  const bool changed = InChild([&] {
    if (geteuid() == 0 && seteuid(65534) != 0) return false;
    CString below = At("read/new"), read = At("read"), mine = At("mine");
    CList<CString> names;
    EXPECT_EQ(files.CreateDirectoryW(below), 0);
    EXPECT_EQ(files.HasCreateFilePermission(At("read")), 0);
    EXPECT_EQ(files.HasCreateFilePermission(At("mine")), 1);
    EXPECT_EQ(files.GetFileNameListFromFolder(At("shut"), names), 0);
    EXPECT_EQ(files.DoesFileExist(At("shut/file")), 0);
    EXPECT_EQ(DoesFileExistAtGivenPath(At("shut\\file")), 0);
    EXPECT_EQ(files.CopyDirectoryWithContents(At("shut"), At("new")), 0);
    EXPECT_FALSE(fs::exists(On("new")));
    EXPECT_EQ(files.CopyDirectoryWithContents(At("mine"), At("new")), 0);
    EXPECT_EQ(Tree("new"), "own=x shut/ ");
    EXPECT_EQ(files.CopyDirectoryWithContents(At("new"), At("read")), 0);
    EXPECT_EQ(files.DeleteDirectory(read), 0);
    EXPECT_EQ(files.DeleteDirectory(mine), 0);
    QFAsciFileBrowse file;
    EXPECT_EQ(file.SetFilePath(At("shut/file")), 1);
    EXPECT_EQ(file.InitialiseFile(), 0);
    return true;
  });
  for (const char* shut : {"shut", "mine/shut"}) fs::permissions(On(shut), fs::perms(0755));
  if (!changed) GTEST_SKIP() << "this process can't give up its rights";
  EXPECT_EQ(Tree(""),
            "mine/ mine/shut/ mine/shut/file=x new/ new/own=x new/shut/ read/ read/file=x shut/ shut/file=x ");
}

TEST_F(HostileFiles, NamesTooLongFailAndPathsUpwardsWork) {
  folder.Write("a/file", "x");
  CString longer = At("a/" + std::string(300, 'n')), up = At("a") + _T("\\..\\c");
  EXPECT_EQ(files.CreateDirectoryW(longer), 0);
  EXPECT_EQ(files.CopyDirectoryWithContents(At("a"), longer), 0);
  EXPECT_EQ(CreateTempFileName(longer, _T("x"), up), 0);
  EXPECT_EQ(files.CreateDirectoryW(up), 1);
  EXPECT_EQ(DoesFileExistAtGivenPath(up + _T("\\..\\a\\file")), 1);
  EXPECT_EQ(files.CopyDirectoryWithContents(At("a"), up + _T("\\..\\d")), 1);
  EXPECT_EQ(files.DeleteDirectory(up), 1);
  EXPECT_EQ(Tree(""), "a/ a/file=x d/ d/file=x ");
}

}  // namespace
