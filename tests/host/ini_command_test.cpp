// `kestrova ini`, run as a user would.
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

struct IniCommand : CommandTest {
  IniCommand() : CommandTest("ini") {}
};

TEST_F(IniCommand, ShowsWhatAProgramFindsAndChangesOneLine) {
  const std::string file =
      folder_.Write("f.ini", "; c\n[Tool]\n Name = \"a \xC3\xA4\"\nname=2\n[tool]\nx=1\n[E]\n").string();
  const std::string none = File("none.ini"), longText(5000, 'x');
  const struct {
    std::vector<std::string> words;
    RunResult wanted;
  } rows[] = {
      {{"list", file}, Prints("[Tool]\nName=a \xC3\xA4\n[E]\n")},
      {{"list", file, "--json"},
       Prints("{\n  \"file\": \"" + file +
              "\",\n  \"sections\": [\n    {\n      \"section\": \"Tool\",\n      \"keys\": [\n        {\n"
              "          \"key\": \"Name\",\n          \"value\": \"a \xC3\xA4\"\n        }\n      ]\n    },\n"
              "    {\n      \"section\": \"E\",\n      \"keys\": []\n    }\n  ]\n}\n")},
      {{"get", file, "TOOL", "NAME"}, Prints("a \xC3\xA4\n")},
      {{"get", file, "Tool", "x"}, Refused(file + " has no key \"x\" in [Tool]", 1)},
      {{"get", none, "Tool", "x"}, Refused("cannot read " + none + ": no such file")},
      {{"set", file, "tool", "NAME", "\xE2\x82\xAC 5"}, Prints("")},
      {{"set", file, "E", "k", longText}, Prints("")},
      {{"get", file, "E", "k"}, Prints(longText + "\n")},
      {{"set", file, "E", "k", ""}, Prints("")},
      {{"get", file, "E", "k"}, Prints("\n")},
      {{"remove", file, "E", "K"}, Prints("")},
      {{"remove", file, "E", ""},
       Refused("KEY: it is empty; leave it out to remove the section; see kestrova ini remove --help", 2)},
      {{"remove", file, "E"}, Prints("")},
      {{"set", none + "/x", "A", "k", "1"}, Refused("cannot write " + none + "/x: the folder does not exist")},
  };
  for (const auto& row : rows) EXPECT_EQ(Run(row.words), row.wanted) << row.words.front();
  EXPECT_EQ(ReadFile(file), "; c\n[Tool]\nName=\xE2\x82\xAC 5\r\nname=2\n[tool]\nx=1\n");
  const std::string noUtf8 = folder_.Write("\xFF.ini", "").string();
  EXPECT_NE(Out({"list", noUtf8, "--json"}).find("\xEF\xBF\xBD.ini"), std::string::npos);
}

}  // namespace
