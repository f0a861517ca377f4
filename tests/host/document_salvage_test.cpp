// A salvaging loader keeps the intact nodes before the damage, without references to the others.
#include <fmt/format.h>

#include "framework/ob_list.h"
#include "host/document/active_document.h"
#include "host/document/document_check.h"
#include "host/document/document_status.h"
#include "host/document/object_archive.h"
#include "host/shell/failure.h"
#include "share/core/document_callbacks.h"
#include "share/objects/serialize_notify.h"
#include "tests/host/document_fixture.h"
#include "tests/host/document_records.h"

using namespace kestrova;
using namespace kvtest;

namespace {

// Nodes that refer to one another forwards and backwards.
const DocumentBytes& Sample() {
  static const DocumentBytes bytes({{"HostTool", -1, -1, {3, 4, 6}},
                                    {"HostSetup"},
                                    {"HostFeature", 1, -1, {5}},
                                    {"HostDrilling", 2, 0},
                                    {"HostOperation", 2, 0},
                                    {"HostFeature", 1},
                                    {"HostOperation", 5, 0}});
  return bytes;
}

class DocumentSalvage : public DocumentTest {
 protected:
  // Loads a whole file around the object archive; its report is report_.
  std::unique_ptr<HostDocument> Load(const std::string& objects, DocumentLoader::Mode mode) {
    WriteDocumentFile(File("a.kvdoc"), objects);
    DocumentLoader loader(File("a.kvdoc"), mode);
    auto document = loader.Load();
    report_ = loader.Report();
    return document;
  }

  // Reads the bytes as an object archive and keeps the intact nodes; the report is report_.
  std::unique_ptr<HostDocument> Read(std::string objects) {
    report_ = {};
    CMemFile file(reinterpret_cast<BYTE*>(objects.data()), objects.size());
    auto document = ReadObjectArchive(file, /*salvage=*/true, report_);
    QFSerializeNotify::PostLoadFromStorageNotify();
    QFSerializeNotify::Clear();
    return document;
  }

  // A check after a repairing one finds nothing.
  void ExpectMendable(HostDocument& document) {
    const ActiveDocument active(&document);
    CheckDocument(document, CheckMode::kRepair, report_);
    LoadReport second;
    CheckDocument(document, CheckMode::kReport, second);
    EXPECT_EQ(second.findingCount, 0u) << FindingsText(second);
  }

  // The document has the first `count` nodes and no link to other objects.
  void ExpectFirst(const HostDocument& document, std::size_t count) {
    ASSERT_EQ(document.NodeCount(), count);
    for (DWORD place = 0; place < count; ++place) {
      HostNode& node = document.NodeAt(place);
      EXPECT_EQ(node.Name(), CString(DocumentBytes::LabelOf(place).c_str()));
      EXPECT_EQ(node.GetObjectId(), place + 1);
      EXPECT_EQ(node.GetCreatedBy(), _T("weber"));
      EXPECT_TRUE(!node.GetOwner() || document.Owns(node.GetOwner()));
      CObList users;
      node.GetAllUserObjects(&users);
      for (POSITION at = users.GetHeadPosition(); at;) EXPECT_TRUE(document.Owns(users.GetNext(at)));
      if (const auto* operation = DYNAMIC_DOWNCAST(HostOperation, &node)) {
        EXPECT_EQ(operation->Tool(), &document.NodeAt(0));
        EXPECT_EQ(operation->Tool()->GetIsUsingThisObject(&node), 1);
      }
    }
  }

  LoadReport report_;
};

TEST_F(DocumentSalvage, IntactDocumentHasAllNodesAndNoFinding) {
  const auto document = Load(Sample().Get(), DocumentLoader::Mode::kStrict);
  ExpectFirst(*document, 7);
  EXPECT_EQ(report_.findingCount, 0u) << FindingsText(report_);
  EXPECT_EQ(report_.status, 0u);
  EXPECT_EQ(document->NodeAt(6).GetOwner(), &document->NodeAt(5));
  EXPECT_EQ(document->NodeAt(2).GetIsUsingThisObject(&document->NodeAt(5)), 1);
}

TEST_F(DocumentSalvage, ArchiveCutAtAnyByteKeepsTheNodesBeforeTheCut) {
  const DocumentBytes& sample = Sample();
  for (std::size_t cut = 0; cut < sample.Get().size() && !HasFailure(); ++cut) {
    SCOPED_TRACE(fmt::format("cut at byte {} of {}", cut, sample.Get().size()));
    const auto whole = std::size_t(
        std::count_if(sample.Ends().begin(), sample.Ends().end(), [&](std::size_t end) { return end <= cut; }));
    const auto document = Read(sample.Get().substr(0, cut));
    EXPECT_EQ(report_.whole, whole);
    ASSERT_TRUE(report_.fault);
    EXPECT_LE(report_.fault->offset, cut);
    EXPECT_EQ(document != nullptr, cut >= 18) << "a document, once its class is known";
    if (!document) continue;
    ExpectFirst(*document, whole);
    if (cut >= sample.TableEnd()) {
      EXPECT_EQ(report_.promised, 7u);
      EXPECT_EQ(report_.part, DocumentReading::Part::kNodes);
      EXPECT_GE(report_.fault->offset, whole == 0 ? sample.TableEnd() : sample.Ends()[whole - 1]);
    }
    ExpectMendable(*document);
  }
}

// The table has more nodes than the bytes left allow memory for.
TEST_F(DocumentSalvage, LargeDocumentCutShortKeepsItsFirstNodes) {
  constexpr int kOperations = 3000;
  std::vector<DocumentBytes::Node> nodes = {{"HostTool"}};
  for (int row = 1; row <= kOperations; ++row) {
    nodes[0].users.push_back(row);
    nodes.push_back({"HostOperation", -1, 0});
  }
  const DocumentBytes sample(nodes);
  for (const std::size_t whole : {1, 100, 3000}) {
    const auto document = Read(sample.Get().substr(0, sample.Ends()[whole - 1] + 3));
    ASSERT_EQ(document->NodeCount(), whole);
    EXPECT_EQ(report_.lost["HostOperation"], DWORD(kOperations + 1 - whole));
    EXPECT_EQ(document->NodeAt(0).GetCountOfUserObjects(), int(whole) - 1);
  }
}

TEST_F(DocumentSalvage, FileCutWithinItsNodesIsSearchedForThem) {
  const std::string objects = Sample().Get();
  WriteDocumentFile(File("a.kvdoc"), objects);
  const std::string file = ReadFile(File("a.kvdoc"));
  const std::size_t start = file.find(objects.substr(0, 64));
  ASSERT_NE(start, std::string::npos);
  for (const std::size_t whole : {0, 1, 4, 6}) {
    const std::size_t end = whole == 0 ? Sample().TableEnd() : Sample().Ends()[whole - 1];
    folder_.Write("b.kvdoc", file.substr(0, start + end + 1));
    DocumentLoader loader(File("b.kvdoc"), DocumentLoader::Mode::kSalvage);
    ExpectFirst(*loader.Load(), whole);
    // A system that opens such a file gives shorter or other bytes.
    const std::string findings = FindingsText(loader.Report());
    EXPECT_TRUE(findings.starts_with("  it is damaged or truncated\n") ||
                findings.find("checksum is wrong") != findings.npos || findings.find(": it has ") != findings.npos)
        << findings;
    DocumentLoader strict(File("b.kvdoc"), DocumentLoader::Mode::kStrict);
    EXPECT_THROW(strict.Load(), Failure);
  }
}

// The numbers of the table's classes and nodes follow those of the indexer's entries.
TEST_F(DocumentSalvage, DamagedStartCostsTheFieldsAndNoNode) {
  Add<HostSetup>(nullptr, _T("N0"));
  Add<HostFeature>(&document_.NodeAt(0), _T("N1"));
  const std::string stored = Store([&](CArchive& ar) { ar << &document_; });
  const std::string history = EmptyHistory();
  for (const std::string& objects : {Sample().Get(), stored}) {
    const std::string header = HeaderBytes(objects, history);
    for (std::size_t at = 0; at < 18; ++at) {
      SCOPED_TRACE(at);
      std::string damaged = objects;
      damaged[at] ^= 0x20;
      WriteDocumentFile(File("a.kvdoc"), &header, &damaged, &history);
      DocumentLoader loader(File("a.kvdoc"), DocumentLoader::Mode::kSalvage);
      const auto document = loader.Load();
      report_ = loader.Report();
      ASSERT_EQ(document->NodeCount(), objects == stored ? 2u : 7u);
      EXPECT_TRUE(report_.fieldsLost);
      EXPECT_EQ(document->NodeAt(1).Name(), _T("N1"));
      EXPECT_GT(document->NextId(), document->NodeCount());
      ExpectMendable(*document);
    }
  }
}

// From 65,535 nodes on, the number before the table has its longer form.
TEST_F(DocumentSalvage, DamagedStartOfALargeDocumentCostsNoNodeEither) {
  constexpr DWORD kNodes = 65536;
  while (document_.NodeCount() < kNodes) Add<HostFeature>(nullptr, _T("N"));
  std::string objects = Store([&](CArchive& ar) { ar << &document_; });
  objects[6] ^= 0x20;
  EXPECT_EQ(Read(objects)->NodeCount(), kNodes);
}

TEST_F(DocumentSalvage, StrictLoaderRefusesWhatTheSalvagingOneKeeps) {
  const std::string cut = Sample().Get().substr(0, Sample().Ends()[2] + 5);
  EXPECT_THROW(Load(cut, DocumentLoader::Mode::kStrict), Failure);
  EXPECT_EQ(GetActiveDocument(), &document_) << "the one before is active again";
  std::string changed = Sample().Get();
  changed[Sample().Ends()[2] - 3] ^= 1;  // within a double
  const std::string header = HeaderBytes(Sample().Get(), EmptyHistory()), history = EmptyHistory();
  WriteDocumentFile(File("b.kvdoc"), &header, &changed, &history);
  DocumentLoader strict(File("b.kvdoc"), DocumentLoader::Mode::kStrict);
  EXPECT_THROW(strict.Load(), Failure);
  DocumentLoader salvaging(File("b.kvdoc"), DocumentLoader::Mode::kSalvage);
  ExpectFirst(*salvaging.Load(), 7);
  EXPECT_EQ(FindingsText(salvaging.Report()), "  Objects: its checksum is wrong: bytes have changed\n");
}

// Node 2 is the owner of node 1 and of itself; the tool does not have the operation as its user.
TEST_F(DocumentSalvage, ImpossibleLinksAreRepaired) {
  const DocumentBytes bytes(
      {{"HostTool", -1, -1, {1}}, {"HostFeature", 2}, {"HostFeature", 2}, {"HostOperation", 2, 0}});
  const auto document = Load(bytes.Get(), DocumentLoader::Mode::kStrict);
  ExpectFirst(*document, 4);
  EXPECT_EQ(document->NodeAt(1).GetOwner(), nullptr) << "an owner stands ahead";
  EXPECT_EQ(document->NodeAt(2).GetOwner(), nullptr) << "nobody owns itself";
  EXPECT_EQ(report_.dangling, 2);
  EXPECT_EQ(report_.oneSided, 1);
  EXPECT_EQ(FindingsText(report_),
            "  Objects: HostFeature 2 \"N1\" has 1 reference to an object outside the document\n"
            "  Objects: HostFeature 3 \"N2\" has 1 reference to an object outside the document\n"
            "  Objects: HostOperation 4 \"N3\" has 1 use that only one side has\n");
  EXPECT_EQ(GetSerializationStatus(), kReferenceLost | kFaultInLinks | 1u) << "an owner came back null";
  int walked = 0;
  document->Walk([&](HostNode&, int) { ++walked; });
  EXPECT_EQ(walked, 4);
}

// A tool and two operations: the users of the tool, the tool of each operation, and the repaired users.
TEST_F(DocumentSalvage, UsesAgreeOnBothSidesInAnyOrder) {
  const std::tuple<std::vector<int>, std::pair<int, int>, std::vector<DWORD>, int> rows[] = {
      {{2, 1}, {0, 0}, {2, 1}, 0}, {{2}, {0, 0}, {2, 1}, 1},  {{1, 2}, {0, -1}, {1}, 1},
      {{}, {0, 0}, {1, 2}, 2},     {{1, 2}, {-1, -1}, {}, 2}, {{2, 1, 2}, {0, 0}, {2, 1}, 0},
  };
  for (const auto& [listed, tools, mended, oneSided] : rows) {
    SCOPED_TRACE(testing::PrintToString(listed) + " " + testing::PrintToString(tools));
    const DocumentBytes bytes(
        {{"HostTool", -1, -1, listed}, {"HostOperation", -1, tools.first}, {"HostOperation", -1, tools.second}});
    const auto document = Load(bytes.Get(), DocumentLoader::Mode::kStrict);
    CObList users;
    document->NodeAt(0).GetAllUserObjects(&users);
    std::vector<DWORD> places;
    for (POSITION at = users.GetHeadPosition(); at;)
      places.push_back(static_cast<HostNode*>(users.GetNext(at))->Place());
    EXPECT_EQ(places, mended);
    EXPECT_EQ(report_.oneSided, oneSided);
    EXPECT_EQ(report_.dangling, 0);
  }
}

// Damage can make a label of half the file.
TEST_F(DocumentSalvage, LongLabelIsTruncatedInAFinding) {
  auto& tool = Add<HostTool>(nullptr, _T("T"));
  auto& operation = Add<HostOperation>(nullptr, CString(_T('n'), 300));
  operation.SetTool(&tool);
  tool.RemoveFromUserObjectsList(&operation);
  Read(Store([&](CArchive& ar) { ar << &document_; }));
  EXPECT_EQ(FindingsText(report_),
            "  Objects: HostOperation 2 \"" + std::string(80, 'n') + "...\" has 1 use that only one side has\n");
}

TEST_F(DocumentSalvage, RecycledNodeStaysAmongTheUsersOfItsOriginalOwnerOnce) {
  const std::tuple<std::vector<DocumentBytes::Node>, DWORD, DWORD> rows[] = {
      {{{"HostFeature", -1, -1, {}, 1}, {"HostFeature", -1, -1, {0}}}, 1, 0},
      {{{"HostTool", -1, -1, {1}}, {"HostOperation", -1, -1, {}, 0}}, 0, 1}};
  for (const auto& [nodes, owner, recycled] : rows) {
    const auto document = Load(DocumentBytes(nodes).Get(), DocumentLoader::Mode::kStrict);
    EXPECT_EQ(document->NodeAt(recycled).GetOriginalOwner(), &document->NodeAt(owner));
    EXPECT_EQ(document->NodeAt(owner).GetCountOfUserObjects(), 1);
    EXPECT_EQ(report_.findingCount, 0u) << FindingsText(report_);
  }
}

// The bytes have a new object in the place of a reference to a user.
TEST_F(DocumentSalvage, ObjectsInNoListAreDeletedAndReported) {
  const DocumentBytes bytes({{"HostTool"}, {"HostFeature"}});
  std::string objects = bytes.Get();
  // The count of the feature's users becomes 1, and the user an object of class 9, HostFeature, like itself.
  const std::size_t users = bytes.Ends()[0] + 6;
  const std::string record = objects.substr(bytes.Ends()[0]);
  objects = objects.substr(0, users) + RecordBytes().Word(1).Class(9).Get() + record + objects.substr(users + 2);
  const auto document = Load(objects, DocumentLoader::Mode::kStrict);
  ExpectFirst(*document, 2);
  EXPECT_EQ(report_.strays, 1);
  EXPECT_EQ(FindingsText(report_),
            "  Objects: HostFeature 2 \"N1\" has 1 reference to an object outside the document\n"
            "  Objects: objects in no list of the document: 1 HostFeature\n");
}

TEST_F(DocumentSalvage, DocumentWithinADocumentIsRefused) {
  const DocumentBytes bytes({{"HostFeature"}});
  const std::size_t users = bytes.TableEnd() + 6;
  const std::string objects = bytes.Get().substr(0, users) + RecordBytes().Word(1).Class(1).Get() + bytes.Get();
  ExpectFirst(*Load(objects, DocumentLoader::Mode::kSalvage), 0);
  ASSERT_TRUE(report_.fault);
  EXPECT_EQ(report_.promised, 1u);
}

}  // namespace
