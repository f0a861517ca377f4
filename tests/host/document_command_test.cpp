// kestrova document, as a user runs it.
#include <set>

#include "tests/folders.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

struct DocumentCommand : CommandTest {
  DocumentCommand() : CommandTest("document") {}
};

TEST_F(DocumentCommand, ShowsATree) {
  EXPECT_EQ(Out({"show", NewDocument("a.kvdoc", {"--nodes", "4", "--seed", "7"})}),
            "a.kvdoc: 4 nodes, mm, storage version 38\n"
            "  HostTool 1 \"\u00D83 flat end mill\", active, flat end mill, diameter 3mm, length 77mm; made by okafor "
            "01/26/2023::14:27\n"
            "  HostSetup 2 \"Mill Part Setup 1\", active, axis 0 -1 0, turned 270deg, clearance 25mm; made by okafor "
            "02/12/2023::07:57\n"
            "    HostFeature 3 \"Slot 1\", active, 6 points, depth 14.4mm; made by okafor 02/12/2023::07:57\n"
            "      HostOperation 4 \"Rough Mill 1\", active, tool 1, feed 482.6mm/min, speed 6550/min, step 4mm; made "
            "by okafor 02/12/2023::07:57, changed by lindqvist 11/12/2024::19:03\n");
}

TEST_F(DocumentCommand, NewFollowsItsOptions) {
  const auto made = [&](const char* seed) {
    return Json({"show", NewDocument("a.kvdoc", {"--nodes", "500", "--seed", seed, "--units", "inch", "--force"})});
  };
  const auto a = made("3");
  EXPECT_EQ(a, made("3"));
  EXPECT_NE(a, made("4"));
  EXPECT_EQ(a["units"], "inch");
  EXPECT_EQ(a["nodes"][0]["facts"],
            (nlohmann::json{{"kind", "flat end mill"}, {"diameter", 0.118110236220472}, {"length", 1.96850393700787}}));
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
  const std::string a = NewDocument("a.kvdoc", {"--nodes", "200"}), b = File("b.kvdoc");
  EXPECT_EQ(Out({"convert", a, b}), "");
  EXPECT_EQ(Json({"show", a})["nodes"], Json({"show", b})["nodes"]);
  const auto history = Json({"history", b})["builds"];
  ASSERT_EQ(history.size(), 1u) << history;
  EXPECT_EQ(history[0], With(history[0], {{"version", "2024"}, {"saves", 3}})) << "a record starts at 1";
  EXPECT_TRUE(Out({"history", b}).starts_with("2024 SP4 build 2024/0826, storage version 38.00: 3 "));
}

TEST_F(DocumentCommand, DumpPrintsEveryObject) {
  const std::string dump = Out({"dump", NewDocument("a.kvdoc", {"--nodes", "30"})});
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
  const std::string other = NewDocument("b.kvdoc", {"--nodes", "3"});
  const RunResult refused = Refused(file + " exists; add --force to replace it");
  EXPECT_EQ(Run({"new", file}), refused);
  EXPECT_EQ(Run({"convert", other, file}), refused);
  EXPECT_EQ(ReadFile(file), "mine");
  Out({"convert", other, file, "--force"});
  EXPECT_NE(ReadFile(file), "mine");
}

TEST_F(DocumentCommand, NamesThatAreNotUtf8AreDifferentFiles) {
  const std::string fe = NewDocument("x\xFE.kvdoc", {"--nodes", "3"}), ff = File("x\xFF.kvdoc");
  const std::string before = ReadFile(fe);
  EXPECT_EQ(Run({"show", ff}), Refused("cannot read " + File("x\\xFF.kvdoc") + ": no such file; check the path"));
  NewDocument("x\xFF.kvdoc", {"--nodes", "7"});
  EXPECT_EQ(Json({"show", ff})["nodes"].size(), 7u);
  Out({"convert", ff, File("y\xFE.kvdoc")});
  EXPECT_EQ(ReadFile(fe), before);
  EXPECT_TRUE(std::filesystem::exists(File("y\xFE.kvdoc")));
}

TEST_F(DocumentCommand, ExplainsFailuresInOneLine) {
  const std::string folder = folder_.Path().string();
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "3"});
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"show", File("none")}, "cannot read " + File("none") + ": no such file; check the path"},
      {{"verify", folder},
       "cannot read " + folder +
           ": access denied; check that it is a file, and the permissions of the file and its folder"},
      {{"show", ""}, "cannot read : the name is empty; name a file"},
      {{"repair", file, File("./a.kvdoc"), "--force"},
       File("./a.kvdoc") + " is the damaged document; name another file for the result"},
      {{"new", File("no/folder")},
       "cannot save " + File("no/folder") + ": the folder does not exist; check the path; nothing was written"},
  };
  for (const auto& [words, reason] : rows) EXPECT_EQ(Run(words), Refused(reason));
}

}  // namespace
