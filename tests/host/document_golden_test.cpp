// Documents of earlier releases: this release reads and converts them, and writes the same bytes for the current
// version.
#include <fmt/format.h>

#include "host/document/active_document.h"
#include "share/core/document_messages.h"
#include "tests/folders.h"
#include "tests/host/document_fixture.h"
#include "tests/host/document_records.h"
#include "tests/host/run_command.h"

using namespace kestrova;
using kvtest::StreamOf;

namespace {

std::string Fixture(const std::string& name) { return (kvtest::SourceFile("tests/host/fixtures") / name).string(); }

struct Golden {
  const char* file;
  float storageVersion;
  const char* changer;  // the creator in versions that do not store it
  // The first record of the history.
  const char* version;
  const char* user;
  int saves;
};
constexpr Golden kGolden[] = {{"storage38.0.kvdoc", 38.0f, "moreau", "2021", "okafor", 7},
                              {"storage31.6.kvdoc", 31.6f, "moreau", "2021", "okafor", 7},
                              {"storage11.2.kvdoc", 11.2f, "moreau", "2004", "moreau", 1},
                              {"storage6.0.kvdoc", 6.0f, "weber", "2021", "okafor", 7}};

std::string ExpectedTree(const Golden& golden) {
  const std::string stamps =
      fmt::format("; made by weber 01/02/2024::03:04, changed by {} 05/06/2024::07:08\n", golden.changer);
  return "  HostTool 1 \"\u00D86 drill\", active, drill, diameter 6mm, length 50mm" + stamps +
         "  HostSetup 2 \"Aufspannung \u00E4\", active, axis 0 0 1, turned 28.6479deg, clearance 25mm" + stamps +
         "    HostFeature 3 \"Hole 1\", locked, 3 points, depth 12.5mm" + stamps +
         "      HostDrilling 4 \"Drill 1\", active, tool 1, feed 300mm/min, speed 2000/min, step 1mm, peck 2mm" +
         stamps +
         "      HostOperation 5 \"Contour Mill 2\", suppressed, feed 300mm/min, speed 2000/min, step 1mm, toolpath "
         "outdated" +
         stamps;
}

struct DocumentGolden : kvtest::CommandTest {
  DocumentGolden() : CommandTest("document") {}
};

TEST_F(DocumentGolden, EveryVersionShowsTheSameTreeAndVerifies) {
  for (const Golden& golden : kGolden) {
    EXPECT_EQ(Out({"show", Fixture(golden.file)}),
              fmt::format("{}: 5 nodes, mm, storage version {}\n", golden.file, golden.storageVersion) +
                  ExpectedTree(golden));
    EXPECT_EQ(Out({"verify", Fixture(golden.file)}),
              fmt::format("{}: storage version {}, 5 of 5 nodes intact, status 0x0000, error location 0x0000\n"
                          "  indexer HostToolCrib: 1 stored, 1 alive\n"
                          "  indexer HostSetup: 1 stored, 1 alive\n"
                          "  indexer HostFeature: 1 stored, 1 alive\n"
                          "  indexer HostOperation: 2 stored, 2 alive\n"
                          "no faults found\n",
                          Fixture(golden.file), golden.storageVersion));
  }
}

TEST_F(DocumentGolden, EveryVersionIsConvertedToTheCurrentOne) {
  for (const Golden& golden : kGolden) {
    EXPECT_EQ(Out({"convert", Fixture(golden.file), File("new.kvdoc"), "--force"}), "");
    EXPECT_EQ(Out({"show", File("new.kvdoc")}), "new.kvdoc: 5 nodes, mm, storage version 38\n" + ExpectedTree(golden));
    const auto history = Json({"history", File("new.kvdoc")})["builds"];
    ASSERT_EQ(history.size(), 2u) << history;
    EXPECT_EQ(history[0],
              kvtest::With(history[0], {{"version", golden.version}, {"user", golden.user}, {"saves", golden.saves}}));
    EXPECT_EQ(history[1], kvtest::With(history[1], {{"version", "2024"}, {"storageVersion", 38.0}}));
  }
}

TEST_F(DocumentGolden, DocumentOfAVersionWithoutHistoryGetsARecord) {
  EXPECT_EQ(Out({"history", Fixture("storage11.2.kvdoc")}),
            "2004 SP0 build unknown, storage version 11.20: 1 saves, last 05/06/2004::07:08 by moreau\n");
}

using GoldenBytes = kvtest::DocumentTest;

// A script wrote the fixture from the layout.
TEST_F(GoldenBytes, AreWrittenBySaving) {
  const std::string golden = Fixture("storage38.0.kvdoc");
  const auto document = DocumentLoader(golden, DocumentLoader::Mode::kStrict).Load();
  const ActiveDocument active(document.get());
  EXPECT_EQ(document->NodeAt(2).GetDisplayColor(), 0x00C08040u);
  EXPECT_EQ(document->NodeAt(3).GetNodeStatus(0xFFFF), 2);
  EXPECT_EQ(ToUtf8(GetDocTitle()), "storage38.0.kvdoc");
  SaveDocument(*document, File("new.kvdoc"));
  EXPECT_EQ(StreamOf(File("new.kvdoc"), kObjectsStream), StreamOf(golden, kObjectsStream));
  const std::string header = StreamOf(File("new.kvdoc"), kHeaderStream);
  EXPECT_EQ(header.substr(0, 32), StreamOf(golden, kHeaderStream).substr(0, 32)) << "to the history's facts";
  EXPECT_EQ(header.size(), 48u);
  EXPECT_EQ(ToUtf8(GetDocTitle()), "new.kvdoc");
}

}  // namespace
