// The record of a node: its exact bytes, and loading of each older layout.
#include <random>

#include "share/core/document_messages.h"
#include "share/objects/object.h"
#include "tests/folders.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"
#include "tests/scratch.h"
#include "tests/values.h"

using namespace kvtest;

namespace {

// A module's node, which is not indexed.
class RecordNode : public QFObject {
  DECLARE_SERIAL(RecordNode)

 public:
  explicit RecordNode(const CString& label = {}) { m_Label = label; }
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override { return nullptr; }

  void Stamp(const AuditTrail::Texts& stamps) { SetStamps(stamps); }
};
IMPLEMENT_SERIAL(RecordNode, QFObject, VERSIONABLE_SCHEMA | 8)

constexpr float kVersions[] = {6.0999f, 6.1f, 38.0f, 0, -6.2f};
constexpr unsigned kSentinel = 0xCAFEBABE;

// The record of a node of that schema in a document of that storage version, followed by a number. The node is its own
// user and original owner, so that no other object is necessary. Archive numbers: class 1, object 2.
std::string RecordOf(int schema, float units) {
  RecordBytes bytes;
  bytes.NewClass("QFObject", schema).Class(1);
  if (units != 6.0999f) bytes.NewClass("QFBaseObject", 2);
  if (schema > 1) bytes.Word(2).Object(2).Null();
  bytes.Text(_T("label")).Text(_T("maker")).Text(_T("01/02/2003::04:05")).Text(_T("06/07/2008::09:10"));
  bytes.Dword(77).Dword(3).Null();
  if (schema > 2) bytes.Text(_T("changer"));
  if (schema > 3) bytes.Word(0x8002);
  if (schema > 4) bytes.Object(2);
  if (schema > 5) bytes.Dword(0x00C08040);
  if (schema > 6) bytes.Null();
  if (schema > 7) bytes.Text(_T("QFHole"));
  return bytes.Dword(kSentinel).Get();
}

// The fields of schema 7 after the users, all empty.
RecordBytes EmptyFields() {
  RecordBytes bytes;
  for (int text = 0; text < 4; ++text) bytes.Text(_T(""));
  return bytes.Dword(0).Dword(0).Null().Text(_T("")).Word(0).Null().Dword(0).Null();
}

void ExpectRecord(const std::string& bytes, int schema) {
  Reader reader(bytes);
  QFObject* object = nullptr;
  reader.ar >> object;
  ASSERT_NE(object, nullptr);
  DWORD next = 0;
  reader.ar >> next;
  EXPECT_EQ(next, kSentinel) << "the record's end";
  EXPECT_EQ(Values(object->GetCountOfUserObjects(), object->Name(), object->GetCreatedBy(), object->GetDateCreated(),
                   object->GetLastModified(), object->GetObjectId(), object->GetState(), object->GetLastModifiedBy()),
            Values(schema > 1 ? 2 : 0, "label|maker|01/02/2003::04:05|06/07/2008::09:10|77", LOCKED,
                   schema > 2 ? "changer" : "maker"));
  EXPECT_EQ(
      Values(object->GetNodeStatus(0xFFFF), object->GetDisplayColor(), object->GetIsPatterned(),
             object->GetRegNameForAutoIndexing()),
      Values(schema > 3 ? 0x8002 : 0, schema > 5 ? 0x00C08040u : 0xFFFFFFFFu, 0, schema > 7 ? "QFHole" : "QFObject"));
  EXPECT_EQ(object->GetOwner(), nullptr);
  EXPECT_EQ(object->GetOriginalOwner(), schema > 4 ? object : nullptr);
  object->RemoveFromUserObjectsList(object);
  delete object;
}

}  // namespace

TEST(NodeRecord, HasItsExactBytes) {
  TestDocument document(6.0f);  // storing does not depend on the document's version
  RecordNode owner(_T("O")), node(_T("N"));
  node.SetOwner(&owner);
  node.AddToUserObjectsList(&owner, 0);
  node.AddToUserObjectsList(&document, 1);
  node.SetState(SUPPRESSED);
  node.SetNodeStatus(0x0102, 1);
  node.SetDisplayColor(0x00030201);
  node.SetRegNameForAutoIndexing(_T("R"));
  EXPECT_EQ(node.GetObjectId(), 1u);
  const char* const expected =
      "FF FF 08 00 0A 00 52 65 63 6F 72 64 4E 6F 64 65 "        // new class 1, RecordNode; object 2
      "FF FF 08 00 08 00 51 46 4F 62 6A 65 63 74 "              // level QFObject, class 3
      "FF FF 02 00 0C 00 51 46 42 61 73 65 4F 62 6A 65 63 74 "  // level QFBaseObject, class 4
      "01 00 "                                                  // one user:
      "01 80 03 80 04 80 "                                      // . class 1, object 5, and its levels
      "00 00 "                                                  // . no users
      "FF FE FF 01 4F 00 FF FE FF 00 FF FE FF 00 FF FE FF 00 "  // . label, made by, made, changed
      "00 00 00 00 00 00 00 00 00 00 FF FE FF 00 "              // . id, state, owner, changed by
      "00 00 00 00 FF FF FF FF 00 00 FF FE FF 00 "              // . status, first owner, colour, pattern, name
      "FF FE FF 01 4E 00 FF FE FF 00 FF FE FF 00 FF FE FF 00 "  // label, made by, made, changed
      "01 00 00 00 01 00 00 00 05 00 FF FE FF 00 "              // id, state, owner: object 5, changed by
      "02 01 00 00 01 02 03 00 00 00 FF FE FF 01 52 00";        // status, first owner, colour, pattern, name
  EXPECT_EQ(Hex(Store([&](CArchive& ar) { ar << &node; })), expected);
}

TEST(NodeRecord, EverySchemaLoadsInEveryStorageVersionAndFromEarlierReleases) {
  const auto expect = [](const std::string& bytes, int schema, float units) {
    SCOPED_TRACE(fmt::format("schema {} in storage version {}", schema, units));
    const TestDocument document(units);
    ExpectRecord(bytes, schema);
  };
  for (const float units : kVersions)
    for (int schema = 1; schema <= 8; ++schema) expect(RecordOf(schema, units), schema, units);
  for (const auto& [file, units, schema] : {std::tuple{"node_schema1_storage6.0.bin", 6.0f, 1},
                                            {"node_schema4_storage30.bin", 30.0f, 4},
                                            {"node_schema7_storage32.002.bin", 32.002f, 7},
                                            {"node_schema8_storage38.bin", 38.0f, 8}})
    expect(ReadFile(kvtest::SourceFile("tests/objects/fixtures") / file), schema, units);
}

TEST(NodeRecord, EveryTruncationRaisesEndOfFileAtEverySchema) {
  const TestDocument document(38.0f);
  for (int schema = 1; schema <= 8; ++schema) {
    const std::string whole = RecordOf(schema, 38.0f), record = whole.substr(0, whole.size() - 4);
    for (std::size_t length = 0; length < record.size(); ++length) {
      const int cause = LoadCause<QFObject>(record.substr(0, length));
      int expected = CArchiveException::endOfFile;
      // An end inside the list of users counts as a fault of the list. An end inside the reference to the original
      // owner does not fail the load.
      if (schema > 1 && length >= 34 && length < 40) expected = CArchiveException::genericException;
      if (schema == 5 && length >= record.size() - 2) expected = CArchiveException::none;
      EXPECT_EQ(cause, expected) << "schema " << schema << ", " << length << " bytes";
    }
  }
}

TEST(NodeRecord, OlderRecordOfAClassThatIsNotIndexedHasNoRegisteredName) {
  const TestDocument document(38.0f);
  RecordBytes bytes;
  bytes.NewClass("QFObject", 7).NewClass("QFBaseObject", 2).Word(0).Bytes(EmptyFields().Get());
  RecordNode node;
  Reader reader(bytes.Get());
  node.Serialize(reader.ar);
  EXPECT_EQ(node.GetRegNameForAutoIndexing(), _T(""));
}

// Loaded nodes share equal texts; a change of one node must not change another. Every third node has an owner, whose
// record is inside the node's record.
TEST(NodeRecord, StampsAndNamesThatComeAgainAreEachNodesOwn) {
  const TestDocument document(38.0f);
  const CString longest(_T('x'), 300);
  const AuditTrail::Texts trails[] = {{_T("a"), _T("d"), _T("m"), _T("a")}, {_T("a"), _T("d"), _T("m"), _T("b")},
                                      {_T("a"), _T("d"), _T("n"), _T("a")}, {_T("a"), longest, _T("m"), _T("a")},
                                      {_T("a"), _T("d"), _T("m"), longest}, {}};
  const CString names[] = {_T("QFHole"), longest, _T("QFHole"), _T("")};
  std::mt19937 random(1);
  const auto joined = [](const AuditTrail::Texts& trail, const CString& name) {
    return Values(trail.createdBy, trail.dateCreated, trail.lastModified, trail.lastModifiedBy, name);
  };
  struct Each {
    std::unique_ptr<RecordNode> stored = std::make_unique<RecordNode>(), loaded;
    std::string texts;
  };
  std::vector<Each> nodes(400);
  for (Each& each : nodes) {
    const AuditTrail::Texts& trail = trails[random() % std::size(trails)];
    const CString& name = names[random() % std::size(names)];
    each.texts = joined(trail, name);
    each.stored->Stamp(trail);
    each.stored->SetRegNameForAutoIndexing(name);
  }
  for (std::size_t i = 0; i < 300; i += 3) nodes[i].stored->SetOwner(nodes[300 + i / 3].stored.get());
  Reader reader(Store([&](CArchive& ar) {
    for (std::size_t i = 0; i < 300; ++i) ar << nodes[i].stored.get();
  }));
  const auto expect = [&](const Each& each) {
    RecordNode& node = *each.loaded;
    EXPECT_EQ(joined({node.GetCreatedBy(), node.GetDateCreated(), node.GetLastModified(), node.GetLastModifiedBy()},
                     node.GetRegNameForAutoIndexing()),
              each.texts);
    node.Stamp({_T("another"), {}, {}, {}});  // must not change other nodes
  };
  for (std::size_t i = 0; i < 300; ++i) {
    RecordNode* read = nullptr;
    reader.ar >> read;
    nodes[i].loaded.reset(read);
    if (i % 3 == 0) nodes[300 + i / 3].loaded.reset(static_cast<RecordNode*>(read->GetOwner()));
    if (i % 2 == 0) expect(nodes[i]);
  }
  for (std::size_t i = 0; i < 400; ++i)
    if (i >= 300 || i % 2 != 0) expect(nodes[i]);
}

// Known references together with new ones, a null one, and one to an object that is no node.
TEST(NodeRecord, LongListOfUsersKeepsItsOrder) {
  const TestDocument document(38.0f);
  RecordBytes bytes;
  bytes.NewClass("RecordNode", 8).NewClass("QFObject", 8).NewClass("QFBaseObject", 2);
  const RecordBytes record = EmptyFields().Text(_T(""));
  constexpr int kUsers = 200;
  bytes.Word(kUsers);  // RecordNode is class 1, the node 2, QFObject 3, QFBaseObject 4
  bytes.Object(2).Class(1).Class(3).Class(4).Word(0).Bytes(record.Get()).Null().NewClass("CObList", 0).Word(0);
  for (int user = 4; user < kUsers; ++user) bytes.Object(user % 2 ? 5 : 2);
  bytes.Bytes(record.Get());
  Reader reader(bytes.Get());
  RecordNode* read = nullptr;
  reader.ar >> read;
  const auto list = read->UserObjectsAsTheyLie();
  ASSERT_EQ(list.size(), std::size_t(kUsers));
  CObject* const fresh = list[1];
  CObject* const foreign = list[3];
  EXPECT_EQ(list[2], nullptr);
  for (int user = 4; user < kUsers; ++user) EXPECT_EQ(list[std::size_t(user)], user % 2 ? fresh : read) << user;
  read->RemoveDuplicatesFromUserObjects();
  EXPECT_EQ(read->GetCountOfUserObjects(), 4);
  read->DetachFromAllUserObjects();
  EXPECT_EQ(read->GetCountOfUserObjects(), 0);
  for (CObject* object : {static_cast<CObject*>(read), fresh, foreign}) delete object;
}

TEST(NodeRecord, StateOutsideTheTableStaysAsStored) {
  const TestDocument document(38.0f);
  QFObject node;
  std::string bytes = Store([&](CArchive& ar) { node.Serialize(ar); });
  bytes[14 + 18 + 2 + 16 + 4] = 9;
  Reader reader(bytes);
  QFObject loaded;
  loaded.Serialize(reader.ar);
  EXPECT_EQ(int(loaded.GetState()), 9);
  EXPECT_EQ(Store([&](CArchive& ar) { loaded.Serialize(ar); }), bytes);
}
