// kestrova document verify and repair, as a user runs them.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/host/document_records.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

class DocumentVerify : public testing::Test {
 protected:
  std::string File(const char* name) const { return (folder_.Path() / name).string(); }
  RunResult Run(const char* command, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"document", command});
    return RunCommand(arguments);
  }
  // The lines of the faults.
  std::string Findings(const char* name) {
    const RunResult result = Run("verify", {File(name)});
    EXPECT_EQ(result.exit_code, 1) << result;
    EXPECT_EQ(result.err, "");
    std::string findings;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with("  ") && !line.starts_with("  indexer")) findings += line.substr(2) + "\n";
    return findings;
  }

  const ScratchFolder folder_;
  const std::string history_ = EmptyHistory();
  const DocumentBytes sample_{{{"HostTool", -1, -1, {2}}, {"HostSetup"}, {"HostOperation", 1, 0}}};
};

// The objects with `list` as the entries of the indexer, which has none.
std::string WithIndexer(const std::string& objects, const RecordBytes& list) {
  const std::string empty = RecordBytes().NewClass("QFObjectIndexerHelper", 2).Class(5).Class(4).Get();
  const std::size_t at = objects.find(empty) + empty.size();
  return objects.substr(0, at) + list.Get() + objects.substr(at + 2);
}

TEST_F(DocumentVerify, ReportsEachFaultWithItsStream) {
  const std::string& good = sample_.Get();
  const std::string header = HeaderBytes(good, history_);
  std::string changed = good;
  changed[sample_.Ends()[0] - 1] ^= 0x10;
  const std::string cut = good.substr(0, sample_.Ends()[1] + 9);
  const std::string longer = good + "more";
  const std::string null(2, '\0');
  const std::string nullHistory = HeaderBytes(good, null);
  std::string magic = header, format = header;
  magic[0] = 'X';
  format[20] ^= 1;
  const auto wrongSize = [](const char* stream, std::size_t bytes, std::size_t wanted) {
    return fmt::format("{}: it has {} bytes, not {} as the header says\n", stream, bytes, wanted);
  };
  const std::string unlisted =
      "Objects: HostTool \"N0\" is not in the indexer\nObjects: HostSetup \"N1\" is not in the indexer\n"
      "Objects: HostOperation \"N2\" is not in the indexer\n";
  const struct {
    const char* what;
    const std::string *header, *objects, *history;
    std::string findings;
  } kCases[] = {
      {"no header", nullptr, &good, &history_, "Header: it is missing: the file is not a document\n" + unlisted},
      {"another header", &magic, &good, &history_, "Header: it is not the header of a document\n" + unlisted},
      {"a header that changed", &format, &good, &history_, "Header: its checksum is wrong\n" + unlisted},
      {"objects that changed", &header, &changed, &history_,
       "Objects: its checksum is wrong: bytes have changed\n" + unlisted},
      {"no objects", &header, nullptr, &history_, "Objects: it is missing\n"},
      {"more behind", &header, &longer, &history_,
       wrongSize("Objects", longer.size(), good.size()) + "Objects: 4 bytes follow the last record\n" + unlisted},
      {"no history", &header, &good, nullptr, "History: it is missing\n" + unlisted},
      {"a history that is null", &nullHistory, &good, &null, "History: the root is null\n" + unlisted},
      {"objects cut off", &header, &cut, &history_,
       wrongSize("Objects", cut.size(), good.size()) +
           fmt::format("Objects: byte {}: the data ends too early, in node 3 of 3 (HostOperation)\n", cut.size()) +

           "Objects: HostTool 1 \"N0\" has 1 reference to an object outside the document\n"
           "Objects: HostTool \"N0\" is not in the indexer\nObjects: HostSetup \"N1\" is not in the indexer\n"},
  };
  for (const auto& c : kCases) {
    WriteDocumentFile(File("a.kvdoc"), c.header, c.objects, c.history);
    EXPECT_EQ(Findings("a.kvdoc"), c.findings) << c.what;
  }
}

TEST_F(DocumentVerify, ComparesIdsStatesAndTheIndexerWithTheNodes) {
  // Two classes with wrong counts, the first without the node's id.
  RecordBytes list;
  list.Word(2).NewClass("QFObjectIndexer", 2).Class(7).Class(4).Text(u"HostToolCrib").Dword(1).Dword(1).Dword(3);
  list.Class(7).Class(7).Class(4).Text(u"HostSetup").Dword(1).Dword(9).Dword(0);
  // Numbers 7 to 9: the class and the two entries.
  DocumentBytes bytes({{"HostTool"}, {"HostSetup"}, {"HostSetup"}}, /*firstNumber=*/10);
  std::string objects = WithIndexer(bytes.Get(), list);
  const std::size_t moved = objects.size() - bytes.Get().size();
  const auto put = [&](std::size_t end, std::size_t back, DWORD value) {
    std::memcpy(&objects[end + moved - back], &value, sizeof value);
  };
  // From a setup's end back to its id: frame, name, then the fields between.
  constexpr std::size_t kFrame = 88, kToId = kFrame + (4 + 18) + 2 + 4 + 2 + 2 + (4 + 12) + 2 + 4 + 4;
  put(bytes.Ends()[1], kToId, 7);
  put(bytes.Ends()[2], kToId, 7);
  put(bytes.Ends()[2], kToId - 4, 12);
  WriteDocumentFile(File("a.kvdoc"), objects);
  EXPECT_EQ(Findings("a.kvdoc"),
            "Objects: the document's next id is 4, and 7 is in use\n"
            "Objects: HostSetup \"N1\" is not in the indexer\n"
            "Objects: HostSetup \"N2\" has the invalid state 12\n"
            "Objects: HostSetup \"N2\" has the id 7 of another node\n"
            "Objects: HostSetup \"N2\" is not in the indexer\n"
            "Objects: the indexer counts 3 of HostToolCrib; the document has 1\n"
            "Objects: the indexer counts 0 of HostSetup; the document has 2\n");
  EXPECT_EQ(Run("repair", {File("a.kvdoc"), File("b.kvdoc")}).exit_code, 0);
  EXPECT_TRUE(
      Run("verify", {File("b.kvdoc")})
          .out.ends_with(
              "  indexer HostToolCrib: 1 stored, 1 alive\n  indexer HostSetup: 2 stored, 2 alive\nno faults found\n"));
  const auto nodes = nlohmann::json::parse(Run("show", {"--json", File("b.kvdoc")}).out)["nodes"];
  EXPECT_EQ(nodes[1]["id"], 7);
  EXPECT_EQ(nodes[2]["id"], 8) << "the next";
  EXPECT_EQ(nodes[2]["label"], "N2");
  EXPECT_EQ(nodes[2]["state"], "active");
}

// Two setups, both listed in the indexer; the second gets another registered name, then the last of all ids.
TEST_F(DocumentVerify, FindsAListedNodeByItsClassAndItsId) {
  constexpr std::size_t kName = 88, kId = kName + (4 + 18) + 2 + 4 + 2 + 2 + (4 + 12) + 2 + 4 + 4;  // from the end
  RecordBytes list;
  list.Word(1).NewClass("QFObjectIndexer", 2).Class(7).Class(4).Text(u"HostSetup").Dword(2).Dword(1).Dword(2).Dword(2);
  const DocumentBytes document({{"HostSetup"}, {"HostSetup"}}, /*firstNumber=*/9);
  const std::string listed = WithIndexer(document.Get(), list);
  std::string objects = listed;
  objects.replace(objects.size() - kName - 2, 1, "q");
  WriteDocumentFile(File("a.kvdoc"), objects);
  EXPECT_EQ(Run("verify", {File("a.kvdoc")}).exit_code, 0) << "counted where it is listed";
  objects = listed;
  objects.replace(objects.size() - kId, 4, "\xFF\xFF\xFF\xFF");
  WriteDocumentFile(File("a.kvdoc"), objects);
  EXPECT_EQ(Findings("a.kvdoc"),
            "Objects: HostSetup \"N1\" has the id 4294967295, which leaves no id for new nodes\n"
            "Objects: HostSetup \"N1\" is not in the indexer\n");
  EXPECT_EQ(Run("repair", {File("a.kvdoc"), File("b.kvdoc")}).exit_code, 0);
  EXPECT_EQ(Run("verify", {File("b.kvdoc")}).out,
            File("b.kvdoc") +
                ": storage version 38, 2 of 2 nodes intact, status 0x0000, error location 0x0000\n"
                "  indexer HostSetup: 2 stored, 2 alive\nno faults found\n");
}

TEST_F(DocumentVerify, ReportsAsJson) {
  const std::string objects = sample_.Get().substr(0, sample_.Ends()[1] + 40);
  const std::string header = HeaderBytes(objects, history_);
  WriteDocumentFile(File("a.kvdoc"), &header, &objects, &history_);
  const RunResult result = Run("verify", {File("a.kvdoc"), "--json"});
  EXPECT_EQ(result.exit_code, 1);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["nodesPromised"], 3);
  EXPECT_EQ(json["lost"], (nlohmann::json{{"HostOperation", 1}}));
  EXPECT_EQ(json["fault"]["node"], 3);
  EXPECT_EQ(json["fault"]["class"], "HostOperation");
  EXPECT_GT(json["fault"]["byte"], sample_.Ends()[1]);
  EXPECT_LE(json["fault"]["byte"], objects.size());
  EXPECT_EQ(json["errorLocation"], 0x400);
  EXPECT_EQ(json["status"], 0xC01) << "nodes and links";
  EXPECT_EQ(json["danglingReferences"], 1);
  EXPECT_EQ(json["findingCount"], json["findings"].size());
  EXPECT_EQ(nlohmann::json::parse(Run("repair", {File("a.kvdoc"), File("b.kvdoc"), "--json"}).out)["nodesWhole"], 2);
}

TEST_F(DocumentVerify, RepairSaysWhatWasLost) {
  EXPECT_EQ(Run("new", {File("a.kvdoc"), "--nodes", "60"}).exit_code, 0);
  folder_.Write("b.kvdoc", ReadFile(File("a.kvdoc")).substr(0, 8000));
  const std::size_t count = nlohmann::json::parse(Run("verify", {File("b.kvdoc"), "--json"}).out)["nodesWhole"];
  ASSERT_GT(count, 10u);
  const RunResult result = Run("repair", {File("b.kvdoc"), File("c.kvdoc")});
  EXPECT_EQ(result.exit_code, 0) << result;
  const std::string first = fmt::format("{}: {} of 60 nodes saved, {} lost: ", File("c.kvdoc"), count, 60 - count);
  EXPECT_TRUE(result.out.starts_with(first)) << result;
  EXPECT_EQ(Run("verify", {File("c.kvdoc")}).exit_code, 0);
}

TEST_F(DocumentVerify, RefusesOtherFilesAndLaterVersions) {
  const std::string text = folder_.Write("text", std::string(600, 'x')).string();
  const std::string& good = sample_.Get();
  std::string format = HeaderBytes(good, history_);
  format[8] = 2;
  const std::string version = HeaderBytes(good, history_, 38.5f);
  WriteDocumentFile(File("format"), &format, &good, &history_);
  WriteDocumentFile(File("version"), &version, &good, &history_);
  WriteDocumentFile(File("empty"), nullptr, nullptr, nullptr);
  const std::string later = "; a later release saved it: open it there";
  const struct {
    std::string file;
    std::string message;
  } kCases[] = {
      {text, "cannot read " + text + ": it is not a document (not a compound file); check the name"},
      {File("format"),
       "cannot read " + File("format") + ": stream Header, it has format 2; this build reads 1" + later},
      {File("version"), "cannot read " + File("version") + ": stream Header, it has storage version 38.5" + later},
  };
  for (const auto& c : kCases) {
    const RunResult expected = {1, "", "kestrova: " + c.message + "\n"};
    EXPECT_EQ(Run("verify", {c.file}), expected);
    EXPECT_EQ(Run("repair", {c.file, File("out")}), expected);
    EXPECT_EQ(Run("show", {c.file}), expected);
  }
  EXPECT_EQ(
      Run("repair", {File("empty"), File("out")}),
      (RunResult{1, "", "kestrova: nothing of " + File("empty") + " can be saved: stream Objects: it is missing\n"}));
  EXPECT_FALSE(std::filesystem::exists(File("out")));
}

}  // namespace
