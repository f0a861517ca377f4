// What commands do beyond what every system has: completion in the shells, output that a full disk does not take, and
// files of the registry's hives that can't be used.
#include <sqlite3.h>
#include <sys/wait.h>

#include <chrono>

#include "tests/host/user_shell.h"

namespace {

using namespace kvtest;

TEST(Completion, EachShellAsksForTheCandidates) {
  const kvtest::UserShell shell;
  const std::string typed =
      "COMP_WORDS=(kestrova machine show --type Mill) COMP_CWORD=4\n_kestrova\necho ${COMPREPLY[*]}";
  EXPECT_EQ(shell.Run("kestrova completion bash >script; echo '" + typed + "' >>script; bash script"),
            kvtest::Prints("Mill MillTurn\n"));
  // Without zsh and fish only the lines that register the function.
  EXPECT_NE(shell.Run("kestrova completion zsh").out.find("\n  compdef _kestrova kestrova\n"), std::string::npos);
  EXPECT_NE(shell.Run("kestrova completion fish").out.find("\ncomplete -c kestrova -f -a "), std::string::npos);
}

struct FullDisk : CommandTest {
  FullDisk() : CommandTest("document") {}
};

TEST_F(FullDisk, OfTheOutputIsAFailure) {
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "3"});
  for (const char* command : {"show", "dump", "verify"}) {
    const std::string line = kvtest::BuiltFile("bin/kestrova").string() + " document " + command + " \"" + file +
                             "\" >/dev/full 2>\"" + File("err") + "\"";
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 3) << command;
    EXPECT_EQ(ReadFile(File("err")), "kestrova: the output is incomplete; check whether the disk is full\n");
  }
}

struct HiveFiles : CommandTest {
  HiveFiles() : CommandTest("reg") {}
};

// Every command names the file in one line, and changes nothing.
TEST_F(HiveFiles, DamagedHiveIsReportedInOneLine) {
  Run({"add", "HKCU\\Software\\KvHost", "/v", "X", "/d", "1"});
  const std::string hive = File("user.hive"), backup = folder_.Write("good.json", "good").string();
  const auto refused = [&](const char* damage) {
    SCOPED_TRACE(damage);
    for (const char* words : {"reg query HKCU /s", "reg export HKCU - /y", "settings get LineWidth", "settings list",
                              "settings set LineWidth 3", "env", "feedcolors show --process mill"}) {
      EXPECT_EQ(
          RunCommand(WordsOf(words)),
          Refused(hive + " is damaged; restore it from a backup, or move it away to begin with an empty registry"))
          << words;
    }
    EXPECT_EQ(RunCommand({"settings", "export", backup, "--force"}).exit_code, 3);
    EXPECT_EQ(ReadFile(backup), "good");
  };
  sqlite3* connection = nullptr;
  sqlite3_open(hive.c_str(), &connection);
  EXPECT_EQ(sqlite3_exec(connection, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr), 0);
  sqlite3_close(connection);
  const std::string good = ReadFile(hive);
  folder_.Write("user.hive", good.substr(0, 4096));
  refused("cut");
  folder_.Write("user.hive", "no hive");
  refused("overwritten");
}

// Absence, refusal and damage have different texts; what only reads settings goes on with the defaults.
TEST_F(HiveFiles, HiveThatCannotBeUsedIsNamedWithItsCause) {
  EXPECT_EQ(
      Run({"query", "HKCU\\Software\\KvHost"}),
      Refused("there is no key " + std::string("HKEY_CURRENT_USER\\Software\\KvHost") + ": the registry is empty, " +
                  File("user.hive") + " does not exist; set KV_REGISTRY if the registry is in another folder",
              1));
  const RegistryIn unusable(folder_.Write("a file", "") / "below");
  const std::string cause = File("a file/below/user.hive") +
                            " cannot be used: a part of the path is not a folder; set KV_REGISTRY to a folder";
  EXPECT_EQ(Run({"query", "HKCU", "/s"}), Refused(cause));
  const RunResult got = RunCommand({"settings", "get", "LineWidth"});
  EXPECT_EQ(got.out, "Display/LineWidth = 2\n");
  EXPECT_EQ(got.exit_code, 0);
  EXPECT_TRUE(got.err.starts_with("kestrova: " + cause + "; the command goes on with the defaults\n")) << got.err;
  EXPECT_EQ(RunCommand({"settings", "export", File("all.json")}).exit_code, 3);
  EXPECT_FALSE(std::filesystem::exists(File("all.json")));
}

// The start waits two seconds in all, and then goes on. What the command asks the environment later does not wait.
TEST_F(HiveFiles, LockedHiveDoesNotStopAStart) {
  RunCommand({"env"});
  Run({"delete", "HKCU\\Software", "/f"});
  Run({"delete", "HKLM\\Software", "/f"});
  sqlite3* connection = nullptr;
  sqlite3_open(File("user.hive").c_str(), &connection);
  const std::string both = "ATTACH '" + File("machine.hive") + "' AS machine; BEGIN IMMEDIATE";
  ASSERT_EQ(sqlite3_exec(connection, both.c_str(), nullptr, nullptr, nullptr), 0);
  const auto start = std::chrono::steady_clock::now();
  const RunResult env = RunCommand({"env"});
  sqlite3_close(connection);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(env.exit_code, 0);
  EXPECT_EQ(env.err, "kestrova: another process keeps " + File("user.hive") +
                         " locked; end it, or try again later; the start of the product has saved nothing\n");
}

}  // namespace
