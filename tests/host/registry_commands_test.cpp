// kestrova reg as support staff uses it.
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
  // In the order of their names, because a system may show values in an order of its own.
  for (const char* words : {"/ve /d C:\\Data\\", "/v -dash /d /slash", "/v Bytes /t REG_BINARY /d 00ffA5", "/v Empty",
                            "/v List /t REG_MULTI_SZ /s ; /d one;two", "/v Long /t REG_QWORD /d 0x123456789A",
                            "-V Minus -T reg_dword -D -1", "/v Number /t REG_DWORD /d 42"}) {
    EXPECT_EQ(Reg("add @ " + std::string(words)), kSuccess);
  }
  EXPECT_EQ(Run({"add", "HKCU\\Software\\KvHost", "/v", "Z\u00E4hler", "/t", "REG_EXPAND_SZ", "/d", "%TEMP% \u20AC"}),
            kSuccess);
  EXPECT_EQ(Reg("add hkey_current_user\\software\\kvhost\\Sub\\Deep"), kSuccess);
  EXPECT_EQ(Out({"query", "HKCU\\SOFTWARE\\KvHost"}),
            R"(
HKEY_CURRENT_USER\SOFTWARE\KvHost
    (Default)    REG_SZ    C:\Data\
    -dash    REG_SZ    /slash
    Bytes    REG_BINARY    00FFA5
    Empty    REG_SZ    )"
            R"(
    List    REG_MULTI_SZ    one\0two
    Long    REG_QWORD    0x123456789a
    Minus    REG_DWORD    0xffffffff
    Number    REG_DWORD    0x2a)"
            "\n    Z\u00E4hler    REG_EXPAND_SZ    %TEMP% \u20AC\n"
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
  const std::tuple<std::string, const char*, std::string> rows[] = {
      {"add @ /v X /d 2", " /f", "value X exists; add /f to overwrite it"},
      {"export @ " + file, " /y", file + " exists; add /y to overwrite it"},
      {"delete @ /v x", " /f", "deleting the value x of " + kKey + " needs /f"},
      {"delete @ /va", " /f", "deleting all values of " + kKey + " needs /f"},
      {"delete @", " /f", "deleting the key " + kKey + " with everything below it needs /f"},
  };
  for (const auto& [words, answer, refusal] : rows) {
    EXPECT_EQ(Reg(words), Refused(refusal));
    EXPECT_EQ(Reg(words + answer), kSuccess) << refusal;
  }
  EXPECT_EQ(ReadFile(file).substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(Reg("query @").exit_code, 1);
}

TEST_F(RegistryCommands, SaysWhatIsMissingOrWrong) {
  Reg("add @");
  const std::pair<const char*, RunResult> rows[] = {
      {"query @\\No", Refused("there is no key " + kKey + "\\No; check the name", 1)},
      {"query @ /v No", Refused("there is no value No in " + kKey, 1)},
      {"delete @ /v No /f", Refused("there is no value No in " + kKey, 1)},
      {"delete HKCU /f", Refused("a whole hive cannot be deleted; name a key below it")},
      {"import /no/such/file.reg", Refused("cannot read /no/such/file.reg: the folder does not exist")},
      {"import /", Refused("cannot read /: it is a folder")},
  };
  for (const auto& [words, wanted] : rows) EXPECT_EQ(Reg(words), wanted);
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

TEST_F(RegistryCommands, HelpShowsExamples) {
  const std::string help = Out({"query", "--help"});
  EXPECT_NE(help.find("\n  kestrova reg query "), std::string::npos) << help;
  EXPECT_EQ(Out({"query", "/?"}), help);
  EXPECT_NE(Out({"--help"}).find("kestrova reg import FILE"), std::string::npos);
}

}  // namespace
