// kestrova reg as support staff uses it.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "platform/registry.h"
#include "tests/host/run_command.h"

using kvtest::ReadFile;
using kvtest::RunCommand;
using kvtest::RunResult;
using kvtest::ScratchFolder;

namespace {

constexpr char kDone[] = "The operation completed successfully.\n";

class RegistryCommands : public testing::Test {
 protected:
  void SetUp() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvHost")); }
  void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software\\KvHost")); }

  static RunResult Reg(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "reg");
    return RunCommand(arguments);
  }
  const ScratchFolder folder_;
};

TEST_F(RegistryCommands, ShowsWhatWasAdded) {
  const std::vector<std::vector<std::string>> adds = {
      {"/v", "Number", "/t", "REG_DWORD", "/d", "42"},
      {"-V", "Minus", "-T", "reg_dword", "-D", "-1"},
      {"/v", "Long", "/t", "REG_QWORD", "/d", "0x123456789A"},
      {"/v", "-dash", "/d", "/slash"},
      {"/ve", "/d", "C:\\Data\\"},
      {"/v", "Bytes", "/t", "REG_BINARY", "/d", "00ffA5"},
      {"/v", "List", "/t", "REG_MULTI_SZ", "/s", ";", "/d", "one;two"},
      {"/v", "Empty"},
      {"/v", "Gr\u00F6\u00DFe", "/t", "REG_EXPAND_SZ", "/d", "%TEMP% \u20AC"},
  };
  for (auto words : adds) {
    words.insert(words.begin(), {"add", "HKCU\\Software\\KvHost"});
    EXPECT_EQ(Reg(words), (RunResult{0, kDone, ""}));
  }
  EXPECT_EQ(Reg({"add", "hkey_current_user\\software\\kvhost\\Sub\\Deep"}), (RunResult{0, kDone, ""}));
  EXPECT_EQ(Reg({"query", "HKCU\\SOFTWARE\\KvHost"}),
            (RunResult{0,
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
                       "\n"
                       "    Gr\u00F6\u00DFe    REG_EXPAND_SZ    %TEMP% \u20AC\n"
                       R"(
HKEY_CURRENT_USER\SOFTWARE\KvHost\Sub
)",
                       ""}));
}

TEST_F(RegistryCommands, QueryFindsOneValueAndWhatIsBelow) {
  Reg({"add", "HKCU\\Software\\KvHost\\A", "/v", "X", "/d", "1"});
  Reg({"add", "HKCU\\Software\\KvHost\\B\\C", "/v", "x", "/t", "REG_DWORD", "/d", "2"});
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost\\A", "/v", "x"}),
            (RunResult{0, "\nHKEY_CURRENT_USER\\Software\\KvHost\\A\n    x    REG_SZ    1\n\n", ""}));
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost", "/s"}), (RunResult{0, R"(
HKEY_CURRENT_USER\Software\KvHost\A
    X    REG_SZ    1

HKEY_CURRENT_USER\Software\KvHost\B\C
    x    REG_DWORD    0x2

)",
                                                                       ""}));
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost\\B\\C", "--json"}), (RunResult{0, R"({
  "keys": [
    {
      "key": "HKEY_CURRENT_USER\\Software\\KvHost\\B\\C",
      "values": [
        {
          "name": "x",
          "type": "REG_DWORD",
          "data": 2
        }
      ],
      "subkeys": []
    }
  ]
}
)",
                                                                                 ""}));
}

TEST_F(RegistryCommands, AsksBeforeItDestroys) {
  Reg({"add", "HKCU\\Software\\KvHost", "/v", "X", "/d", "1"});
  const std::string file = folder_.Write("old.reg", "old").string();
  const struct {
    std::vector<std::string> words;
    std::string switch_word;
    std::string refusal;
  } rows[] = {
      {{"add", "HKCU\\Software\\KvHost", "/v", "X", "/d", "2"}, "/f", "value X exists; add /f to overwrite it"},
      {{"export", "HKCU\\Software\\KvHost", file}, "/y", file + " exists; add /y to overwrite it"},
      {{"delete", "HKCU\\Software\\KvHost", "/v", "x"},
       "/f",
       "deleting the value x of HKEY_CURRENT_USER\\Software\\KvHost needs /f"},
      {{"delete", "HKCU\\Software\\KvHost", "/va"},
       "/f",
       "deleting all values of HKEY_CURRENT_USER\\Software\\KvHost needs /f"},
      {{"delete", "HKCU\\Software\\KvHost"},
       "/f",
       "deleting the key HKEY_CURRENT_USER\\Software\\KvHost with all below it needs /f"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Reg(row.words), (RunResult{1, "", "kestrova: " + row.refusal + "\n"}));
    auto words = row.words;
    words.push_back(row.switch_word);
    EXPECT_EQ(Reg(words), (RunResult{0, kDone, ""})) << row.refusal;
  }
  EXPECT_EQ(ReadFile(file).substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost"}).exit_code, 1);
}

TEST_F(RegistryCommands, SaysWhatIsMissingOrWrong) {
  Reg({"add", "HKCU\\Software\\KvHost"});
  const struct {
    std::vector<std::string> words;
    int exit_code;
    std::string line;
  } rows[] = {
      {{"query", "HKCU\\Software\\KvHost\\No"},
       1,
       "there is no key HKEY_CURRENT_USER\\Software\\KvHost\\No; check the name"},
      {{"query", "HKCU\\Software\\KvHost", "/v", "No"},
       1,
       "there is no value No in HKEY_CURRENT_USER\\Software\\KvHost"},
      {{"query", "HKCU\\Software\\KvHost", "/ve"},
       1,
       "there is no value (Default) in HKEY_CURRENT_USER\\Software\\KvHost"},
      {{"delete", "HKCU\\Software\\KvHost", "/v", "No", "/f"},
       1,
       "there is no value No in HKEY_CURRENT_USER\\Software\\KvHost"},
      {{"delete", "HKCU", "/f"}, 1, "a whole hive cannot be deleted; name a key below it"},
      {{"import", "/no/such/file.reg"}, 1, "cannot read /no/such/file.reg; check the name"},
      {{}, 2, "reg needs a command; see kestrova reg --help"},
      {{"search"}, 2, "reg has no command search; see kestrova reg --help"},
      {{"query"}, 2, "a name is missing; see kestrova reg query --help"},
      {{"query", "HKCR\\X"}, 2, "HKCR\\X is no key; a key begins with HKCU\\ or HKLM\\, in quotes for the shell"},
      {{"query", "HKCU", "/x"}, 2, "/x is not expected; see kestrova reg query --help"},
      {{"query", "HKCU", "/v"}, 2, "/v needs a value behind it; see kestrova reg query --help"},
      {{"query", "HKCU", "/v", "a", "/ve"},
       2,
       "only one of /v, /ve and /va can be given; see kestrova reg query --help"},
      {{"export", "HKCU"}, 2, "a key and a file are needed; see kestrova reg export --help"},
      {{"add", "HKCU\\Software\\KvHost", "/v", "a", "/t", "REG_X"},
       2,
       "/t REG_X is no type; see kestrova reg add --help"},
      {{"add", "HKCU\\Software\\KvHost", "/v", "a", "/t", "REG_DWORD", "/d", "4294967296"},
       2,
       "/d 4294967296 is not a number of 32 bits; give it in decimal or as 0x2a"},
      {{"add", "HKCU\\Software\\KvHost", "/v", "a", "/t", "REG_DWORD", "/d", "1x"},
       2,
       "/d 1x is not a number of 32 bits; give it in decimal or as 0x2a"},
      {{"add", "HKCU\\Software\\KvHost", "/v", "a", "/t", "REG_BINARY", "/d", "abc"},
       2,
       "/d abc is not binary data; give pairs of hexadecimal digits"},
      {{"add", "HKCU\\Software\\KvHost", "/v", "a", "/t", "REG_MULTI_SZ", "/d", "a\\0\\0b"},
       2,
       "a list cannot hold an empty text; check /d and /s"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Reg(row.words), (RunResult{row.exit_code, "", "kestrova: " + row.line + "\n"}));
  }
}

// In a hive of its own: the command ends with one line whatever stands in the file.
TEST_F(RegistryCommands, DamagedHiveIsToldInOneLine) {
  const std::string before = std::getenv("KV_REGISTRY");
  kvtest::UseRegistry(folder_.Path());
  Reg({"add", "HKCU\\Software\\KvHost", "/v", "X", "/d", "1"});
  sqlite3* connection = nullptr;
  sqlite3_open((folder_.Path() / "user.hive").c_str(), &connection);
  EXPECT_EQ(sqlite3_exec(connection, "UPDATE value SET name = printf('%.20000c', 'x')", nullptr, nullptr, nullptr), 0);
  sqlite3_close(connection);
  const std::string key = "kestrova: HKEY_CURRENT_USER\\Software\\KvHost: ";
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost"}),
            (RunResult{1, "", key + "there is more data than room; try again\n"}));
  folder_.Write("user.hive", "no hive");
  const RunResult damaged = {1, "", key + "the registry's file is damaged; put a copy in its place\n"};
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost"}), damaged);
  EXPECT_EQ(Reg({"export", "HKCU\\Software\\KvHost", (folder_.Path() / "out.reg").string()}), damaged);
  kvtest::UseRegistry(before);
}

TEST_F(RegistryCommands, HelpShowsExamples) {
  for (const char* command : {"query", "add", "delete", "export", "import"}) {
    const RunResult help = Reg({command, "--help"});
    EXPECT_EQ(help.exit_code, 0);
    EXPECT_NE(help.out.find("\n  kestrova reg " + std::string(command) + " "), std::string::npos) << help.out;
    EXPECT_EQ(Reg({command, "/?"}), help);
  }
  EXPECT_NE(Reg({"--help"}).out.find("kestrova reg import FILE"), std::string::npos);
}

TEST_F(RegistryCommands, RefusedImportNamesTheLineAndChangesNothing) {
  const std::string file = folder_
                               .Write("bad.reg",
                                      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\KvHost]\n"
                                      "\"Good\"=dword:00000001\n\"Bad\"=dword:xyz\n")
                               .string();
  EXPECT_EQ(Reg({"import", file}),
            (RunResult{1, "",
                       "kestrova: " + file +
                           ":5: not a number of 32 bits; write dword: and 1 to 8 hexadecimal digits; nothing was "
                           "imported\n"}));
  EXPECT_EQ(Reg({"query", "HKCU\\Software\\KvHost"}).exit_code, 1);
}

}  // namespace
