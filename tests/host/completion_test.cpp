// The completion of the command line.
#include <gtest/gtest.h>

#include <set>

#include "host/commands/commands.h"
#include "tests/host/run_command.h"

TEST(Commands, HelpListsTheTableInItsOrderAndCompletionOffersIt) {
  const std::string help = kvtest::RunCommand({"--help"}).out;
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
  EXPECT_EQ(kvtest::RunCommand({"complete-words", ""}).out, offered);
}

TEST(Commands, NamesAnUnknownCommand) {
  const auto refused = [](const char* path) {
    return kvtest::RunResult{
        2, "",
        std::string("kestrova: frob is not a command of ") + path + "; " + path + " --help lists the commands\n"};
  };
  EXPECT_EQ(kvtest::RunCommand({"frob"}), refused("kestrova"));
  EXPECT_EQ(kvtest::RunCommand({"document", "frob", "x"}), refused("kestrova document"));
}

TEST(Completion, OffersCommandsOptionsAndChoices) {
  struct {
    std::vector<std::string> words;
    std::string candidates;
  } const kCases[] = {
      {{"complete-words", "machine", ""}, "check\nexport\nshow\n"},
      {{"complete-words", "machine", "export", "--ma"}, "--machines\n"},
      {{"complete-words", "machine", "export", "--type", ""}, "Mill\nMillTurn\nTurn\n"},
      {{"complete-words", "machine", "export", "--machines", ""}, ""},  // the shell offers files
      {{"complete-words", "document", "new", "part.kvdoc", "--units", ""}, "inch\nmm\n"},
      {{"complete-words", "reg", "query", "/"}, "/s\n/v\n/ve\n"},
      {{"complete-words", "reg", "query", "HKCU", "--"}, "--json\n"},
      {{"complete-words", "reg", "add", "HKCU", "/v", "X", "/t", "REG_D"}, "REG_DWORD\nREG_DWORD_BIG_ENDIAN\n"},
  };
  for (const auto& c : kCases) {
    const auto result = kvtest::RunCommand(c.words);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, c.candidates) << c.words.back();
  }
}

TEST(Completion, ScriptNamesTheCommand) {
  EXPECT_NE(kvtest::RunCommand({"completion", "bash"}).out.find("complete -o default -F _kestrova kestrova"),
            std::string::npos);
  EXPECT_EQ(kvtest::RunCommand({"completion", "fish"}).exit_code, 2);
}
