// kestrova reg as support staff uses it.
#include <sqlite3.h>

#include <chrono>

#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

const std::string kKey = "HKEY_CURRENT_USER\\Software\\KvHost";

class RegistryCommands : public CommandTest {
 protected:
  RegistryCommands() : CommandTest("reg") {}
  // The words of a line, in which @ is the tests' key.
  static std::vector<std::string> With(const std::string& line) {
    std::vector<std::string> words = WordsOf(line);
    for (std::string& word : words)
      if (const std::size_t at = word.find('@'); at != word.npos) word.replace(at, 1, "HKCU\\Software\\KvHost");
    return words;
  }
  RunResult Reg(const std::string& line) const { return Run(With(line)); }
};

const RunResult kSuccess = Prints("The operation completed successfully.\n");

TEST_F(RegistryCommands, ShowsWhatWasAdded) {
  for (const char* words :
       {"/v Number /t REG_DWORD /d 42", "-V Minus -T reg_dword -D -1", "/v Long /t REG_QWORD /d 0x123456789A",
        "/v -dash /d /slash", "/ve /d C:\\Data\\", "/v Bytes /t REG_BINARY /d 00ffA5",
        "/v List /t REG_MULTI_SZ /s ; /d one;two", "/v Empty"}) {
    EXPECT_EQ(Reg("add @ " + std::string(words)), kSuccess);
  }
  EXPECT_EQ(
      Run({"add", "HKCU\\Software\\KvHost", "/v", "Gr\u00F6\u00DFe", "/t", "REG_EXPAND_SZ", "/d", "%TEMP% \u20AC"}),
      kSuccess);
  EXPECT_EQ(Reg("add hkey_current_user\\software\\kvhost\\Sub\\Deep"), kSuccess);
  EXPECT_EQ(Out({"query", "HKCU\\SOFTWARE\\KvHost"}),
            R"(
HKEY_CURRENT_USER\SOFTWARE\KvHost
    Number    REG_DWORD    0x2a
    Minus    REG_DWORD    0xffffffff
    Long    REG_QWORD    0x123456789a
    -dash    REG_SZ    /slash
    (Default)    REG_SZ    C:\Data\
    Bytes    REG_BINARY    00FFA5
    List    REG_MULTI_SZ    one\0two
    Empty    REG_SZ    )"
            "\n    Gr\u00F6\u00DFe    REG_EXPAND_SZ    %TEMP% \u20AC\n"
            R"(
HKEY_CURRENT_USER\SOFTWARE\KvHost\Sub
)");
}

TEST_F(RegistryCommands, QueryFindsOneValueAndWhatIsBelow) {
  Reg("add @\\A /v X /d 1");
  Reg("add @\\B\\C /v x /t REG_DWORD /d 2");
  EXPECT_EQ(Out(With("query @\\A /v x")), "\n" + kKey + "\\A\n    x    REG_SZ    1\n\n");
  EXPECT_EQ(Out(With("query @ /s")),
            "\n" + kKey + "\\A\n    X    REG_SZ    1\n\n" + kKey + "\\B\\C\n    x    REG_DWORD    0x2\n\n");
  const nlohmann::json value = {{"name", "x"}, {"type", "REG_DWORD"}, {"data", 2}};
  EXPECT_EQ(Json(With("query @\\B\\C"))["keys"],
            (nlohmann::json{{{"key", kKey + "\\B\\C"}, {"values", {value}}, {"subKeys", nlohmann::json::array()}}}));
}

TEST_F(RegistryCommands, AsksBeforeItDestroys) {
  Reg("add @ /v X /d 1");
  const std::string file = folder_.Write("old.reg", "old").string();
  const struct {
    std::string words;
    const char* answer;
    std::string refusal;
  } rows[] = {
      {"add @ /v X /d 2", " /f", "value X exists; add /f to overwrite it"},
      {"export @ " + file, " /y", file + " exists; add /y to overwrite it"},
      {"delete @ /v x", " /f", "deleting the value x of " + kKey + " needs /f"},
      {"delete @ /va", " /f", "deleting all values of " + kKey + " needs /f"},
      {"delete @", " /f", "deleting the key " + kKey + " with everything below it needs /f"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Reg(row.words), Refused(row.refusal));
    EXPECT_EQ(Reg(row.words + row.answer), kSuccess) << row.refusal;
  }
  EXPECT_EQ(ReadFile(file).substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(Reg("query @").exit_code, 1);
}

TEST_F(RegistryCommands, SaysWhatIsMissingOrWrong) {
  Reg("add @");
  const struct {
    const char* words;
    RunResult wanted;
  } rows[] = {
      {"query @\\No", Refused("there is no key " + kKey + "\\No; check the name", 1)},
      {"query @ /v No", Refused("there is no value No in " + kKey, 1)},
      {"delete @ /v No /f", Refused("there is no value No in " + kKey, 1)},
      {"delete HKCU /f", Refused("a whole hive cannot be deleted; name a key below it")},
      {"import /no/such/file.reg", Refused("cannot read /no/such/file.reg; check the name")},
  };
  for (const auto& row : rows) EXPECT_EQ(Reg(row.words), row.wanted);
}

TEST_F(RegistryCommands, ScriptsGetValuesAloneAndPipes) {
  Reg("add @ /v X /d a;b");
  EXPECT_EQ(Reg("query @ /v X --value"), Prints("a;b\n"));
  EXPECT_EQ(Reg("query @ --value").exit_code, 2);
  const RunResult exported = Reg("export @ -");
  EXPECT_EQ(exported.err, "");
  ASSERT_EQ(exported.out.substr(0, 2), "\xFF\xFE");
  Reg("delete @ /f");
  EXPECT_EQ(RunCommand({"reg", "import", "-"}, exported.out), kSuccess);
  EXPECT_EQ(Reg("query @ /v X --value"), Prints("a;b\n"));
}

// Every command names the file in one line, and changes nothing.
TEST_F(RegistryCommands, DamagedHiveIsReportedInOneLine) {
  Reg("add @ /v X /d 1");
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
TEST_F(RegistryCommands, HiveThatCannotBeUsedIsNamedWithItsCause) {
  EXPECT_EQ(Reg("query @"), Refused("there is no key " + kKey + ": the registry is empty, " + File("user.hive") +
                                        " does not exist; set KV_REGISTRY if the registry is in another folder",
                                    1));
  const RegistryIn unusable(folder_.Write("a file", "") / "below");
  const std::string cause = File("a file/below/user.hive") +
                            " cannot be used: a part of the path is not a folder; set KV_REGISTRY to a folder";
  EXPECT_EQ(Reg("query HKCU /s"), Refused(cause));
  const RunResult got = RunCommand({"settings", "get", "LineWidth"});
  EXPECT_EQ(got.out, "Display/LineWidth = 2\n");
  EXPECT_EQ(got.exit_code, 0);
  EXPECT_TRUE(got.err.starts_with("kestrova: " + cause + "; the command goes on with the defaults\n")) << got.err;
  EXPECT_EQ(RunCommand({"settings", "export", File("all.json")}).exit_code, 3);
  EXPECT_FALSE(std::filesystem::exists(File("all.json")));
}

// The start waits two seconds in all, and then goes on.
TEST_F(RegistryCommands, LockedHiveDoesNotStopAStart) {
  RunCommand({"env"});
  Reg("delete HKCU\\Software /f");
  sqlite3* connection = nullptr;
  sqlite3_open(File("user.hive").c_str(), &connection);
  ASSERT_EQ(sqlite3_exec(connection, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), 0);
  const auto start = std::chrono::steady_clock::now();
  const RunResult env = RunCommand({"env"});
  sqlite3_close(connection);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(env.exit_code, 0);
  EXPECT_EQ(env.err, "kestrova: another process keeps " + File("user.hive") +
                         " locked; end it, or try again later; the start of the product has saved nothing\n");
}

TEST_F(RegistryCommands, HelpShowsExamples) {
  const std::string help = Out({"query", "--help"});
  EXPECT_NE(help.find("\n  kestrova reg query "), std::string::npos) << help;
  EXPECT_EQ(Out({"query", "/?"}), help);
  EXPECT_NE(Out({"--help"}).find("kestrova reg import FILE"), std::string::npos);
}

}  // namespace
