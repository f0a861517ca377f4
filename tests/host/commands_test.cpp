// The table of commands: its help, wrong usage of any command, completion and the progress bar.
#include <set>

#include "host/commands/commands.h"
#include "host/shell/output.h"
#include "host/shell/progress_bar.h"
#include "tests/host/run_command.h"

using kestrova::ProgressBar;
using kvtest::RunCommand, kvtest::WordsOf;

TEST(Commands, HelpListsTheTableInItsOrderAndCompletionOffersIt) {
  const std::string help = RunCommand({"--help"}).out;
  std::set<std::string> names;
  std::size_t row = 0;
  for (const kestrova::Command& command : kestrova::kCommands) {
    EXPECT_TRUE(names.insert(command.name + std::string("\n")).second) << command.name << " stands there twice";
    row = help.find(std::string("\n  ") + command.name + ' ', row);
    ASSERT_NE(row, std::string::npos) << command.name << "\n" << help;
    EXPECT_EQ(std::string(command.example).rfind(command.name, 0), 0U) << command.example;
  }
  std::string offered;
  for (const std::string& name : names) offered += name;
  EXPECT_EQ(RunCommand({"complete-words", ""}).out, offered);
}

TEST(Commands, RefuseWrongUsage) {
  const std::pair<const char*, const char*> rows[] = {
      {"frob", "frob is not a command of kestrova; kestrova --help lists the commands"},
      {"document frob x", "frob is not a command of kestrova document; kestrova document --help lists the commands"},
      {"machine export --machines . --type Mill ../VMC", "NAME \"../VMC\" is not the name of a machine's folder"},
      {"reg", "a command is missing; kestrova reg --help lists the commands"},
      {"reg search", "search is not a command of kestrova reg; kestrova reg --help lists the commands"},
      {"reg query", "KEY is missing; see kestrova reg query --help"},
      {"reg query HKCR\\X", "HKCR\\X is not a key; a key begins with HKCU\\ or HKLM\\ and needs quotes in the shell"},
      {"reg query HKCU /x", "/x is unexpected; the nearest: /s, /v"},
      {"reg query HKCU /v a /ve", "only one of /v, /ve and /va can be given; see kestrova reg query --help"},
      {"reg add HKCU\\K /v a /t REG_X", "/t REG_X is not a type; see kestrova reg add --help"},
      {"reg add HKCU\\K /v a /t REG_DWORD /d 4294967296",
       "/d 4294967296 is not a number of 32 bits; give it in decimal or as 0x2a"},
      {"reg add HKCU\\K /v a /t REG_BINARY /d abc", "/d abc is not binary data; give pairs of hexadecimal digits"},
      {"reg add HKCU\\K /v a /t REG_MULTI_SZ /d a\\0\\0b", "a list cannot hold an empty text; check /d and /s"},
      {"settings set Feature 1 --tree document", "the document is missing: add --document FILE"},
  };
  for (const auto& [words, reason] : rows) EXPECT_EQ(RunCommand(WordsOf(words)), kvtest::Refused(reason, 2)) << words;
  // A library words the reason.
  for (const char* words :
       {"completion tcsh", "document new a --nodes=-1", "document new a --units=m", "document new a --seed=-1",
        "document new a --seed=18446744073709551616", "document convert a", "feedcolors show --process laser",
        "ini get a.ini A", "job run none.kvdoc --command dance", "machine", "machine export --type Mill",
        "machine new VMC", "machine show --machines . --type mill VMC",
        "settings list --tree application --document a.kvdoc", "techdb activate x"}) {
    const kvtest::RunResult result = RunCommand(WordsOf(words));
    EXPECT_EQ(result, (kvtest::RunResult{2, "", result.err})) << words;
  }
}

TEST(Commands, FailWithAnObjectIfJsonIsAskedFor) {
  EXPECT_EQ(RunCommand({"frob", "--json", "x\x1b\x7f\xC2\x9B"}),
            (kvtest::RunResult{2,
                               "{\n  \"error\": {\n    \"code\": 2,\n    \"message\": \"frob is not a command of "
                               "kestrova; kestrova --help lists the commands\"\n  }\n}\n",
                               "kestrova: frob is not a command of kestrova; kestrova --help lists the commands\n"}));
  EXPECT_EQ(RunCommand({"document", "show", "a\x7F\xC2\x9B", "--json"}).out.find("a\\u007f\\u009b"), 58u);
}

TEST(Output, NeitherControlsTheTerminalNorForgesALine) {
  const std::pair<const char*, const char*> rows[] = {
      {"a\nb\r\x1b[2J\x7f", "a b  [2J "},
      {"\xC2\x9B"
       "1m\xC2\xA0\xC3\xA4",
       " 1m\xC2\xA0\xC3\xA4"},
      {"x\x9B\xFF\xC3", "x\\x9B\\xFF\\xC3"},
      {"\xC0\x9B\xE0\x80\x9B\xED\xA0\x80\xF4\x90\x80\x80",
       "\\xC0\\x9B\\xE0\\x80\\x9B\\xED\\xA0\\x80\\xF4\\x90\\x80\\x80"},
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
  };
  for (const auto& [text, shown] : rows) EXPECT_EQ(kestrova::Harmless(text), shown);
}

TEST(Completion, OffersCommandsOptionsAndChoices) {
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"machine", "", "check\nexport\nlist\nnew\nschema\nshow\n"},
      {"machine export", "--ma", "--machines\n"},
      {"machine export --type", "", "Mill\nMillTurn\nTurn\n"},
      {"machine export --machines", "", ""},  // the shell offers files
      {"document new part.kvdoc --units", "", "inch\nmm\n"},
      {"reg query", "/", "/s\n/v\n/ve\n"},
      {"reg query HKCU", "--", "--json\n--value\n"},
      {"reg add HKCU /v X /t", "REG_D", "REG_DWORD\nREG_DWORD_BIG_ENDIAN\n"},
  };
  for (const auto& [line, last, candidates] : rows) {
    std::vector<std::string> words = WordsOf("complete-words " + line);
    words.push_back(last);
    EXPECT_EQ(RunCommand(words), kvtest::Prints(candidates)) << line;
  }
}

TEST(ProgressBar, ShowsThePartThatIsDone) {
  EXPECT_EQ(ProgressBar::Text("reading nodes", 0, 200), "[--------------------]   0% reading nodes");
  EXPECT_EQ(ProgressBar::Text("reading nodes", 99, 200), "[#########-----------]  49% reading nodes");
  for (const auto& [done, all] : {std::pair{200, 200}, {300, 200}, {0, 0}})
    EXPECT_EQ(ProgressBar::Text("reading nodes", done, all), "[####################] 100% reading nodes") << done;
  EXPECT_EQ(ProgressBar::Step(1), 1) << "without a bar";
}

// The command takes long enough for a bar.
TEST(ProgressBar, IsNotWrittenWithoutATerminal) {
  const kvtest::ScratchFolder folder;
  const std::string file = (folder.Path() / "a.kvdoc").string();
  EXPECT_EQ(RunCommand({"document", "new", file, "--nodes", "200000"}), kvtest::Prints(""));
}
