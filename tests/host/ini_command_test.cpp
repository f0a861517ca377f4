// `kestrova ini`, run as a user would.
#include "tests/host/json_schema.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

RunResult NotFoundAgain(const std::string& name) {
  return Refused("the " + name + ", so it could not be found again", 2);
}

struct IniCommand : CommandTest {
  IniCommand() : CommandTest("ini") {}
};

TEST_F(IniCommand, ShowsWhatAProgramFindsAndChangesOneLine) {
  const std::string file =
      folder_.Write("f.ini", "; c\n[Tool]\n Name = \"a \xC3\xA4\"\nname=2\n[tool]\nx=1\n[E]\n").string();
  const std::string none = File("none.ini"), longText(5000, 'x');
  const std::string big = folder_.Write("big.ini", std::string("\xFE\xFF\0[\0A\0]", 8)).string();
  const std::string western = folder_.Write("western.ini", "[\xC4]\r\n").string();
  const std::pair<std::vector<std::string>, RunResult> rows[] = {
      {{"list", file}, Prints("[Tool]\nName=a \xC3\xA4\n[E]\n")},
      {{"list", file, "--json"},
       Prints("{\n  \"file\": " + JsonOf(file) +
              ",\n  \"sections\": [\n    {\n      \"section\": \"Tool\",\n      \"keys\": [\n        {\n"
              "          \"key\": \"Name\",\n          \"value\": \"a \xC3\xA4\"\n        }\n      ]\n    },\n"
              "    {\n      \"section\": \"E\",\n      \"keys\": []\n    }\n  ]\n}\n")},
      {{"get", file, "TOOL", "NAME"}, Prints("a \xC3\xA4\n")},
      {{"get", file, "Tool", "x"}, Refused(file + " has no key \"x\" in [Tool]", 1)},
      {{"get", none, "Tool", "x"}, Refused("cannot read " + none + ": no such file")},
      {{"set", file, "tool", "NAME", "\xE2\x82\xAC 5"}, Prints("")},
      {{"set", file, "E", "k", longText}, Prints("")},
      {{"get", file, "E", "k"}, Prints(longText + "\n")},
      {{"set", file, "E", "k", "", "--json"},
       Prints("{\n  \"file\": " + JsonOf(file) +
              ",\n  \"section\": \"E\",\n  \"key\": \"k\",\n  \"value\": \"\"\n}\n")},
      {{"get", file, "E", "k"}, Prints("\n")},
      {{"remove", file, "E", "K"}, Prints("")},
      {{"remove", file, "E", ""},
       Refused("KEY: it is empty; leave it out to remove the section; see kestrova ini remove --help", 2)},
      {{"remove", file, "E", "--json"}, Prints("{\n  \"file\": " + JsonOf(file) + ",\n  \"section\": \"E\"\n}\n")},
      {{"remove", file, "E"}, Refused(file + " has no section [E]", 1)},
      {{"remove", file, "tool", "x"}, Refused(file + " has no key \"x\" in [tool]", 1)},
      {{"get", file, "tool", "name", "--json"},
       Prints("{\n  \"file\": " + JsonOf(file) +
              ",\n  \"section\": \"tool\",\n  \"key\": \"name\",\n  \"value\": \"\xE2\x82\xAC 5\"\n}\n")},
      {{"set", file, "tool", ";c", "1"}, NotFoundAgain("key \";c\" begins with \";\" or \"[\"")},
      {{"set", file, "tool", " [x]", "1"}, NotFoundAgain("key \" [x]\" begins with \";\" or \"[\"")},
      {{"set", file, "tool", "a=b", "1"}, NotFoundAgain("key \"a=b\" has a \"]\" or \"=\"")},
      {{"set", file, "A]B", "a", "1"}, NotFoundAgain("section \"A]B\" has a \"]\" or \"=\"")},
      {{"set", file, " ", "a", "1"}, NotFoundAgain("section \" \" is empty")},
      {{"set", file, "A\nB", "a", "1"}, NotFoundAgain("section \"A B\" has a line end")},
      {{"set", file, "A", "a\t", "1"}, NotFoundAgain("key \"a \" begins or ends with a tab")},
      {{"set", file, "A", "a", "1\n[B]"}, Refused("a value cannot have line ends", 2)},
      {{"set", file, "A", "\xE4", "1"}, Refused("the key is not UTF-8: \\xE4", 2)},
      {{"set", big, "A", "a", "1"},
       Refused("cannot write " + big +
               ": it is UTF-16 without the mark FF FE, or UTF-32; save it as UTF-8, or as UTF-16 in little-endian "
               "order with a mark")},
      {{"set", western, "A", "a", "'q'"}, Prints("")},
      {{"get", western, "A", "a"}, Prints("'q'\n")},
      {{"set", western, "A", "a", " \xC3\xA4 "}, Prints("")},
      {{"get", western, "A", "a", "--json"},
       Prints("{\n  \"file\": " + JsonOf(western) +
              ",\n  \"section\": \"A\",\n  \"key\": \"a\",\n  \"value\": \" \xC3\xA4 \"\n}\n")},
      {{"set", western, "A", "a", "\xD0\x96"},
       Refused(
           "cannot write " + western +
           ": the file is not UTF-8, and its encoding lacks a character of the text; save the file as UTF-8 first")},
      {{"set", none + "/x", "A", "k", "1"}, Refused("cannot write " + none + "/x: the folder does not exist")},
  };
  for (const auto& [words, wanted] : rows) {
    const RunResult result = Run(words);
    EXPECT_EQ(result, wanted) << words.front();
    if (result.exit_code == 0 && words.back() == "--json") {
      EXPECT_EQ(SchemaFault("ini-" + words.front(), result.out), "");
    }
  }
  EXPECT_EQ(ReadFile(file), "; c\n[Tool]\nName=\xE2\x82\xAC 5\r\nname=2\n[tool]\nx=1\n");
  EXPECT_EQ(ReadFile(western), "[\xC4]\r\n[A]\r\na=\" \xE4 \"\r\n");
  const std::string noUtf8 = folder_.Write("\xFF.ini", "").string();
  EXPECT_NE(Out({"list", noUtf8, "--json"}).find("\xEF\xBF\xBD.ini"), std::string::npos);
}

}  // namespace
