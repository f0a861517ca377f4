// kestrova document, as a user runs it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "tests/host/run_command.h"

namespace {

using kvtest::RunCommand;
using kvtest::RunResult;

class DocumentCommand : public testing::Test {
 protected:
  std::string File(const char* name) const { return (folder_.Path() / name).string(); }
  RunResult Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "document");
    return RunCommand(arguments);
  }
  void Make(const char* name, std::vector<std::string> options = {}) {
    std::vector<std::string> arguments = {"new", File(name)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(Run(arguments), (RunResult{0, "", ""}));
  }

  const kvtest::ScratchFolder folder_;
};

TEST_F(DocumentCommand, ShowsATree) {
  Make("a.kvdoc", {"--nodes", "4", "--seed", "7"});
  EXPECT_EQ(
      Run({"show", File("a.kvdoc")}),
      (RunResult{0,
                 "a.kvdoc: 4 nodes, mm, storage version 38\n"
                 "  HostTool 1 \"\u00D83 flat end mill\", active, flat end mill, diameter 3mm, length 77mm; made by "
                 "okafor 01/26/2023::14:27\n"
                 "  HostSetup 2 \"Mill Part Setup 1\", active, axis 0 -1 0, turned 270deg, clearance 25mm; made by "
                 "okafor 02/12/2023::07:57\n"
                 "    HostFeature 3 \"Slot 1\", active, 6 points, depth 14.4mm; made by okafor "
                 "02/12/2023::07:57\n"
                 "      HostOperation 4 \"Rough Mill 1\", active, tool 1, feed 482.6mm/min, speed 6550/min, step "
                 "4mm; made by okafor 02/12/2023::07:57, changed by lindqvist 11/12/2024::19:03\n",
                 ""}));
}

TEST_F(DocumentCommand, NewFollowsItsOptions) {
  const auto made = [&](const char* seed) {
    Make("a.kvdoc", {"--nodes", "500", "--seed", seed, "--units", "inch", "--force"});
    return nlohmann::json::parse(Run({"show", "--json", File("a.kvdoc")}).out);
  };
  const auto a = made("3");
  EXPECT_EQ(a, made("3"));
  EXPECT_NE(a, made("4"));
  EXPECT_EQ(a["units"], "inch");
  EXPECT_NE(a["nodes"][0]["facts"].get<std::string>().find("in, length"), std::string::npos);
  ASSERT_EQ(a["nodes"].size(), 500u);
  std::set<std::string> met;
  int with_tool = 0;
  for (const auto& node : a["nodes"]) {
    met.insert({node["class"], node["state"]});
    with_tool += node.contains("tool") && !node["tool"].is_null();
  }
  EXPECT_EQ(met, (std::set<std::string>{"HostDrilling", "HostFeature", "HostOperation", "HostSetup", "HostTool",
                                        "active", "locked", "recycled", "suppressed"}));
  EXPECT_GT(with_tool, 100);
}

TEST_F(DocumentCommand, ConvertKeepsAllNodesAndAddsToTheHistory) {
  Make("a.kvdoc", {"--nodes", "200"});
  EXPECT_EQ(Run({"convert", File("a.kvdoc"), File("b.kvdoc")}), (RunResult{0, "", ""}));
  const auto a = nlohmann::json::parse(Run({"show", "--json", File("a.kvdoc")}).out);
  const auto b = nlohmann::json::parse(Run({"show", "--json", File("b.kvdoc")}).out);
  EXPECT_EQ(a["nodes"], b["nodes"]);
  const auto history = nlohmann::json::parse(Run({"history", "--json", File("b.kvdoc")}).out);
  ASSERT_EQ(history.size(), 1u) << history;
  EXPECT_EQ(history[0]["version"], "2024");
  EXPECT_EQ(history[0]["saves"], 3) << "a record starts at 1";
  EXPECT_TRUE(Run({"history", File("b.kvdoc")}).out.starts_with("2024 SP4 build 2024/0826, storage version 38.00: 3 "));
}

TEST_F(DocumentCommand, DumpPrintsEveryObject) {
  Make("a.kvdoc", {"--nodes", "30"});
  const std::string dump = Run({"dump", File("a.kvdoc")}).out;
  const auto count = [&](const std::string& text) {
    int found = 0;
    for (std::size_t at = dump.find(text); at != std::string::npos; at = dump.find(text, at + 1)) ++found;
    return found;
  };
  EXPECT_EQ(count("= QFObject Start ="), 31) << "the document and its nodes";
  EXPECT_EQ(count("= QFObjectIndexerHelper Start ="), 1);
  EXPECT_EQ(count("= QFDocSrHistory Start ="), 1);
  EXPECT_EQ(count("= HostTool Start ="), 5);
  EXPECT_EQ(count("\n Total Nodes: 30"), 1);
}

TEST_F(DocumentCommand, ReplacesAFileOnlyWithForce) {
  const std::string file = folder_.Write("a.kvdoc", "mine").string();
  Make("b.kvdoc", {"--nodes", "3"});
  const RunResult refused = {1, "", "kestrova: " + file + " exists; add --force to replace it\n"};
  EXPECT_EQ(Run({"new", file}), refused);
  EXPECT_EQ(Run({"convert", File("b.kvdoc"), file}), refused);
  EXPECT_EQ(kvtest::ReadFile(file), "mine");
  EXPECT_EQ(Run({"convert", File("b.kvdoc"), file, "--force"}).exit_code, 0);
  EXPECT_NE(kvtest::ReadFile(file), "mine");
}

TEST_F(DocumentCommand, ExplainsFailuresInOneLine) {
  const std::string folder = folder_.Path().string();
  Make("a.kvdoc", {"--nodes", "3"});
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } kCases[] = {
      {{"show", File("none")}, "cannot read " + File("none") + ": no such file; check the path"},
      {{"verify", folder},
       "cannot read " + folder +
           ": access denied; check that it is a file, and the permissions of the file and its folder"},
      {{"show", ""}, "cannot read : the name is empty; name a file"},
      {{"repair", File("a.kvdoc"), File("./a.kvdoc"), "--force"},
       File("./a.kvdoc") + " is the damaged document; name another file for the result"},
      {{"new", File("no/folder")},
       "cannot save " + File("no/folder") + ": the folder does not exist; check the path; nothing was written"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Run(c.arguments), (RunResult{1, "", "kestrova: " + c.message + "\n"}));
}

TEST_F(DocumentCommand, FailsIfTheDiskIsFullForTheOutput) {
  Make("a.kvdoc", {"--nodes", "3"});
  for (const char* command : {"show", "dump", "verify"}) {
    const std::string line = std::string(KV_BIN_DIR "/kestrova document ") + command + " \"" + File("a.kvdoc") +
                             "\" >/dev/full 2>\"" + File("err") + "\"";
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 1) << command;
    EXPECT_EQ(kvtest::ReadFile(File("err")), "kestrova: the output is incomplete; check whether the disk is full\n");
  }
}

TEST_F(DocumentCommand, RefusesWrongUsage) {
  for (const char* option : {"--nodes=-1", "--units=m", "--seed=-1", "--seed=18446744073709551616"})
    EXPECT_EQ(Run({"new", "a", option}).exit_code, 2) << option;
  EXPECT_EQ(Run({"convert", "a"}).exit_code, 2);
}

}  // namespace
