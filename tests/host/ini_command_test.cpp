// `kestrova ini`, run as a user would.
#include <gtest/gtest.h>

#include "tests/host/run_command.h"

namespace {

using kvtest::RunCommand;
using kvtest::RunResult;

TEST(IniCommand, ShowsWhatAProgramFindsAndChangesOneLine) {
  const kvtest::ScratchFolder folder;
  const std::string file =
      folder.Write("f.ini", "; c\n[Tool]\n Name = \"a \xC3\xA4\"\nname=2\n[tool]\nx=1\n[E]\n").string();
  const std::string none = (folder.Path() / "none.ini").string();
  const std::string longText(5000, 'x');
  const struct {
    std::vector<std::string> arguments;
    RunResult wanted;
  } rows[] = {
      {{"list", file}, {0, "[Tool]\nName=a \xC3\xA4\n[E]\n", ""}},
      {{"list", file, "--json"},
       {0,
        "{\n  \"file\": \"" + file +
            "\",\n  \"sections\": [\n    {\n      \"section\": \"Tool\",\n      \"keys\": [\n        {\n"
            "          \"key\": \"Name\",\n          \"value\": \"a \xC3\xA4\"\n        }\n      ]\n    },\n"
            "    {\n      \"section\": \"E\",\n      \"keys\": []\n    }\n  ]\n}\n",
        ""}},
      {{"get", file, "TOOL", "NAME"}, {0, "a \xC3\xA4\n", ""}},
      {{"get", file, "Tool", "x"}, {1, "", "kestrova: " + file + " has no key \"x\" in [Tool]\n"}},
      {{"get", none, "Tool", "x"}, {1, "", "kestrova: cannot read " + none + ": no such file\n"}},
      {{"set", file, "tool", "NAME", "\xE2\x82\xAC 5"}, {0, "", ""}},
      {{"set", file, "E", "k", longText}, {0, "", ""}},
      {{"get", file, "E", "k"}, {0, longText + "\n", ""}},
      {{"set", file, "E", "k", ""}, {0, "", ""}},
      {{"get", file, "E", "k"}, {0, "\n", ""}},
      {{"remove", file, "E", "K"}, {0, "", ""}},
      {{"remove", file, "E", ""},
       {2, "", "KEY: it is empty; leave it out to remove the section\nRun with --help for more information.\n"}},
      {{"remove", file, "E"}, {0, "", ""}},
      {{"set", none + "/x", "A", "k", "1"},
       {1, "", "kestrova: cannot write " + none + "/x: the folder does not exist\n"}},
  };
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {"ini"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    EXPECT_EQ(RunCommand(arguments), row.wanted) << row.arguments.front();
  }
  EXPECT_EQ(kvtest::ReadFile(file), "; c\n[Tool]\nName=\xE2\x82\xAC 5\r\nname=2\n[tool]\nx=1\n");
  EXPECT_EQ(RunCommand({"ini", "get", file, "A"}).exit_code, 2);
  const std::string noUtf8 = folder.Write("\xFF.ini", "").string();
  EXPECT_NE(RunCommand({"ini", "list", noUtf8, "--json"}).out.find("\xEF\xBF\xBD.ini"), std::string::npos);
}

}  // namespace
