// kestrova reg as support staff uses it.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/host/run_command.h"
#include "tests/registry_calls.h"

using kvtest::ReadFile;
using kvtest::RunCommand;
using kvtest::RunResult;
using kvtest::ScratchFolder;

namespace {

class RegistryCommands : public testing::Test {
 protected:
  void SetUp() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvHost")); }
  void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvHost")); }

  // Runs kestrova reg with the words of a line; @ is the tests' key.
  static RunResult Reg(const std::string& line, const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"reg"};
    std::istringstream in(line);
    for (std::string word; in >> word;) {
      if (const std::size_t at = word.find('@'); at != word.npos) word.replace(at, 1, "HKCU\\Software\\KvHost");
      words.push_back(word);
    }
    words.insert(words.end(), more.begin(), more.end());
    return RunCommand(words);
  }
  static RunResult Refused(int exit_code, const std::string& line) {
    return {exit_code, "", "kestrova: " + line + "\n"};
  }
  const ScratchFolder folder_;
};

const RunResult kSuccess = {0, "The operation completed successfully.\n", ""};

TEST_F(RegistryCommands, ShowsWhatWasAdded) {
  for (const char* words :
       {"/v Number /t REG_DWORD /d 42", "-V Minus -T reg_dword -D -1", "/v Long /t REG_QWORD /d 0x123456789A",
        "/v -dash /d /slash", "/ve /d C:\\Data\\", "/v Bytes /t REG_BINARY /d 00ffA5",
        "/v List /t REG_MULTI_SZ /s ; /d one;two", "/v Empty"}) {
    EXPECT_EQ(Reg("add @ " + std::string(words)), kSuccess);
  }
  EXPECT_EQ(Reg("add @ /v Gr\u00F6\u00DFe /t REG_EXPAND_SZ /d", {"%TEMP% \u20AC"}), kSuccess);
  EXPECT_EQ(Reg("add hkey_current_user\\software\\kvhost\\Sub\\Deep"), kSuccess);
  EXPECT_EQ(Reg("query HKCU\\SOFTWARE\\KvHost"), (RunResult{0,
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
)",
                                                            ""}));
}

TEST_F(RegistryCommands, QueryFindsOneValueAndWhatIsBelow) {
  Reg("add @\\A /v X /d 1");
  Reg("add @\\B\\C /v x /t REG_DWORD /d 2");
  const std::string key = "HKEY_CURRENT_USER\\Software\\KvHost";
  EXPECT_EQ(Reg("query @\\A /v x").out, "\n" + key + "\\A\n    x    REG_SZ    1\n\n");
  EXPECT_EQ(Reg("query @ /s").out,
            "\n" + key + "\\A\n    X    REG_SZ    1\n\n" + key + "\\B\\C\n    x    REG_DWORD    0x2\n\n");
  const nlohmann::json value = {{"name", "x"}, {"type", "REG_DWORD"}, {"data", 2}};
  EXPECT_EQ(nlohmann::json::parse(Reg("query @\\B\\C --json").out)["keys"],
            (nlohmann::json{{{"key", key + "\\B\\C"}, {"values", {value}}, {"subkeys", nlohmann::json::array()}}}));
}

TEST_F(RegistryCommands, AsksBeforeItDestroys) {
  Reg("add @ /v X /d 1");
  const std::string file = folder_.Write("old.reg", "old").string();
  const std::string key = "HKEY_CURRENT_USER\\Software\\KvHost";
  const struct {
    std::string words;
    const char* answer;
    std::string refusal;
  } rows[] = {
      {"add @ /v X /d 2", " /f", "value X exists; add /f to overwrite it"},
      {"export @ " + file, " /y", file + " exists; add /y to overwrite it"},
      {"delete @ /v x", " /f", "deleting the value x of " + key + " needs /f"},
      {"delete @ /va", " /f", "deleting all values of " + key + " needs /f"},
      {"delete @", " /f", "deleting the key " + key + " with everything below it needs /f"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Reg(row.words), Refused(1, row.refusal));
    EXPECT_EQ(Reg(row.words + row.answer), kSuccess) << row.refusal;
  }
  EXPECT_EQ(ReadFile(file).substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(Reg("query @").exit_code, 1);
}

TEST_F(RegistryCommands, SaysWhatIsMissingOrWrong) {
  Reg("add @");
  const struct {
    int exit_code;
    const char *words, *line;
  } rows[] = {
      {1, "query @\\No", "there is no key HKEY_CURRENT_USER\\Software\\KvHost\\No; check the name"},
      {1, "query @ /v No", "there is no value No in HKEY_CURRENT_USER\\Software\\KvHost"},
      {1, "delete @ /v No /f", "there is no value No in HKEY_CURRENT_USER\\Software\\KvHost"},
      {1, "delete HKCU /f", "a whole hive cannot be deleted; name a key below it"},
      {1, "import /no/such/file.reg", "cannot read /no/such/file.reg; check the name"},
      {2, "", "reg needs a command; see kestrova reg --help"},
      {2, "search", "reg has no command search; see kestrova reg --help"},
      {2, "query", "KEY is missing; see kestrova reg query --help"},
      {2, "query HKCR\\X", "HKCR\\X is not a key; a key begins with HKCU\\ or HKLM\\ and needs quotes in the shell"},
      {2, "query HKCU /x", "/x is unexpected; see kestrova reg query --help"},
      {2, "query HKCU /v a /ve", "only one of /v, /ve and /va can be given; see kestrova reg query --help"},
      {2, "add @ /v a /t REG_X", "/t REG_X is not a type; see kestrova reg add --help"},
      {2, "add @ /v a /t REG_DWORD /d 4294967296",
       "/d 4294967296 is not a number of 32 bits; give it in decimal or as 0x2a"},
      {2, "add @ /v a /t REG_BINARY /d abc", "/d abc is not binary data; give pairs of hexadecimal digits"},
      {2, "add @ /v a /t REG_MULTI_SZ /d a\\0\\0b", "a list cannot hold an empty text; check /d and /s"},
  };
  for (const auto& row : rows) EXPECT_EQ(Reg(row.words), Refused(row.exit_code, row.line));
}

// In a separate hive, which the test damages.
TEST_F(RegistryCommands, DamagedHiveIsReportedInOneLine) {
  const kvtest::RegistryIn own(folder_.Path());
  Reg("add @ /v X /d 1");
  sqlite3* connection = nullptr;
  sqlite3_open((folder_.Path() / "user.hive").c_str(), &connection);
  EXPECT_EQ(sqlite3_exec(connection, "UPDATE value SET name = printf('%.20000c', 'x')", nullptr, nullptr, nullptr), 0);
  sqlite3_close(connection);
  const std::string key = "HKEY_CURRENT_USER\\Software\\KvHost: ";
  EXPECT_EQ(Reg("query @"), Refused(1, key + "there is more data than room; try again"));
  folder_.Write("user.hive", "no hive");
  const RunResult damaged = Refused(1, key + "the registry's file is damaged; restore it from a backup");
  EXPECT_EQ(Reg("query @"), damaged);
  EXPECT_EQ(Reg("export @ " + (folder_.Path() / "out.reg").string()), damaged);
}

TEST_F(RegistryCommands, HelpShowsExamples) {
  const RunResult help = Reg("query --help");
  EXPECT_EQ(help.exit_code, 0);
  EXPECT_NE(help.out.find("\n  kestrova reg query "), std::string::npos) << help.out;
  EXPECT_EQ(Reg("query /?"), help);
  EXPECT_NE(Reg("--help").out.find("kestrova reg import FILE"), std::string::npos);
}

}  // namespace
