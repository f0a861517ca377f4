// kestrova document verify and repair, as a user runs them.
#include <fmt/format.h>

#include "tests/host/document_records.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;
using namespace std::string_literals;

class DocumentVerify : public CommandTest {
 protected:
  DocumentVerify() : CommandTest("document") {}
  // The lines of the faults of a_.
  std::string Findings() {
    const RunResult result = Run({"verify", a_});
    EXPECT_EQ(result.exit_code, 1) << result;
    EXPECT_EQ(result.err, "");
    std::string findings;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with("  ") && !line.starts_with("  indexer")) findings += line.substr(2) + "\n";
    return findings;
  }

  const std::string a_ = File("a.kvdoc"), b_ = File("b.kvdoc"), history_ = EmptyHistory();
  const DocumentBytes sample_{{{"HostTool", -1, -1, {2}}, {"HostSetup"}, {"HostOperation", 1, 0}}};
};

// From a setup's end back to the end of its name, and to its id: the frame, then the name and the fields between.
constexpr std::size_t kToName = 88, kToId = kToName + (4 + 18) + 2 + 4 + 2 + 2 + (4 + 12) + 2 + 4 + 4;

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
  const std::string cut = good.substr(0, sample_.Ends()[1] + 9), longer = good + "more", null(2, '\0');
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
  using Bytes = const std::string*;
  const std::tuple<const char*, Bytes, Bytes, Bytes, std::string> rows[] = {
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
  for (const auto& [what, first, objects, history, findings] : rows) {
    WriteDocumentFile(a_, first, objects, history);
    EXPECT_EQ(Findings(), findings) << what;
  }
  // The last case as JSON.
  const auto json = nlohmann::json::parse(Run({"verify", a_, "--json"}).out);
  EXPECT_EQ(json, With(json, {{"nodesPromised", 3},
                              {"lost", {{{"class", "HostOperation"}, {"count", 1}}}},
                              {"fault", {{"node", 3}, {"class", "HostOperation"}, {"byte", cut.size()}}},
                              {"errorLocation", 0x400},
                              {"status", 0xC01},  // nodes and links
                              {"danglingReferences", 1},
                              {"findingCount", json["findings"].size()}}));
  const RunResult repair = Run({"repair", a_, b_, "--json"});
  EXPECT_EQ(repair.exit_code, 1) << "a node is lost";
  const auto saved = nlohmann::json::parse(repair.out);
  EXPECT_EQ(saved, With(saved, {{"output", b_}, {"nodesSaved", 2}, {"nodesLost", 1}}));
}

TEST_F(DocumentVerify, ComparesIdsStatesAndTheIndexerWithTheNodes) {
  // Two classes with wrong counts, the first without the node's id.
  RecordBytes list;
  list.Word(2).NewClass("QFObjectIndexer", 2).Class(7).Class(4).Text(_T("HostToolCrib")).Dword(1).Dword(1).Dword(3);
  list.Class(7).Class(7).Class(4).Text(_T("HostSetup")).Dword(1).Dword(9).Dword(0);
  // Numbers 7 to 9: the class and the two entries.
  DocumentBytes bytes({{"HostTool"}, {"HostSetup"}, {"HostSetup"}}, /*firstNumber=*/10);
  std::string objects = WithIndexer(bytes.Get(), list);
  const std::size_t moved = objects.size() - bytes.Get().size();
  const auto put = [&](std::size_t end, std::size_t back, DWORD value) {
    std::memcpy(&objects[end + moved - back], &value, sizeof value);
  };
  put(bytes.Ends()[1], kToId, 7);
  put(bytes.Ends()[2], kToId, 7);
  put(bytes.Ends()[2], kToId - 4, 12);
  WriteDocumentFile(a_, objects);
  EXPECT_EQ(Findings(),
            "Objects: the document's next id is 4, and 7 is in use\n"
            "Objects: HostSetup \"N1\" is not in the indexer\n"
            "Objects: HostSetup \"N2\" has the invalid state 12\n"
            "Objects: HostSetup \"N2\" has the id 7 of another node\n"
            "Objects: HostSetup \"N2\" is not in the indexer\n"
            "Objects: the indexer counts 3 of HostToolCrib; the document has 1\n"
            "Objects: the indexer counts 0 of HostSetup; the document has 2\n");
  Out({"repair", a_, b_});
  EXPECT_TRUE(
      Out({"verify", b_})
          .ends_with(
              "  indexer HostToolCrib: 1 stored, 1 alive\n  indexer HostSetup: 2 stored, 2 alive\nno faults found\n"));
  const auto nodes = Json({"show", b_})["nodes"];
  EXPECT_EQ(nodes[1]["id"], 7);
  EXPECT_EQ(nodes[2], With(nodes[2], {{"id", 8}, {"label", "N2"}, {"state", "active"}})) << "the next id";
}

// Two setups, both listed in the indexer; the second gets another registered name, then the last of all ids.
TEST_F(DocumentVerify, FindsAListedNodeByItsClassAndItsId) {
  RecordBytes list;
  list.Word(1).NewClass("QFObjectIndexer", 2).Class(7).Class(4).Text(_T("HostSetup")).Dwords({1, 2}).Dword(2);
  const DocumentBytes document({{"HostSetup"}, {"HostSetup"}}, /*firstNumber=*/9);
  const std::string listed = WithIndexer(document.Get(), list);
  std::string objects = listed;
  objects.replace(objects.size() - kToName - 2, 1, "q");
  WriteDocumentFile(a_, objects);
  Out({"verify", a_});  // counted where it is listed
  objects = listed;
  objects.replace(objects.size() - kToId, 4, "\xFF\xFF\xFF\xFF");
  WriteDocumentFile(a_, objects);
  EXPECT_EQ(Findings(),
            "Objects: HostSetup \"N1\" has the id 4294967295, which leaves no id for new nodes\n"
            "Objects: HostSetup \"N1\" is not in the indexer\n");
  Out({"repair", a_, b_});
  EXPECT_EQ(Out({"verify", b_}), b_ +
                                     ": storage version 38, 2 of 2 nodes intact, status 0x0000, error location 0x0000\n"
                                     "  indexer HostSetup: 2 stored, 2 alive\nno faults found\n");
}

TEST_F(DocumentVerify, RepairSaysWhatWasLost) {
  folder_.Write("a.kvdoc", ReadFile(NewDocument("whole.kvdoc", {"--nodes", "60"})).substr(0, 15000));
  const std::size_t count = nlohmann::json::parse(Run({"verify", a_, "--json"}).out)["nodesWhole"];
  ASSERT_GT(count, 5u);
  const RunResult repair = Run({"repair", a_, b_});
  EXPECT_EQ(repair.exit_code, 1) << repair;
  EXPECT_TRUE(repair.out.starts_with(fmt::format("{}: {} of 60 nodes saved, {} lost: ", b_, count, 60 - count)))
      << repair;
  Out({"verify", b_});
}

TEST_F(DocumentVerify, RefusesOtherFilesAndLaterVersions) {
  const std::string text = folder_.Write("text", std::string(600, 'x')).string();
  const std::string& good = sample_.Get();
  std::string format = HeaderBytes(good, history_);
  format[8] = 2;
  const std::string version = HeaderBytes(good, history_, 38.5f);
  WriteDocumentFile(a_, &format, &good, &history_);
  WriteDocumentFile(b_, &version, &good, &history_);
  const std::string later = "; a later release saved it: open it there";
  const std::pair<std::string, std::string> rows[] = {
      {text, ": it is not a document (not a compound file); check the name"},
      {a_, ": stream Header, it has format 2; this build reads 1" + later},
      {b_, ": stream Header, it has storage version 38.5" + later},
  };
  for (const auto& [file, reason] : rows) {
    for (const auto& words : {std::vector{"verify"s, file}, {"repair"s, file, File("out")}, {"show"s, file}})
      EXPECT_EQ(Run(words), Refused("cannot read " + file + reason));
  }
  WriteDocumentFile(a_, nullptr, nullptr, nullptr);
  EXPECT_EQ(Run({"repair", a_, File("out")}),
            Refused("nothing of " + a_ + " can be saved: stream Objects: it is missing"));
  EXPECT_FALSE(std::filesystem::exists(File("out")));
}

}  // namespace
