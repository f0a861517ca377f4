// References between nodes that cannot be stored or are damaged, and failed loads.
#include <gtest/gtest.h>

#include "framework/ob_list.h"
#include "share/objects/object.h"
#include "share/objects/storage_status.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"

using namespace kvtest;

namespace {

int g_live = 0;

class LinkNode : public QFObject {
  DECLARE_SERIAL(LinkNode)

 public:
  explicit LinkNode(const CString& label = {}) {
    m_Label = label;
    ++g_live;
  }
  ~LinkNode() override { --g_live; }
};
IMPLEMENT_SERIAL(LinkNode, QFObject, VERSIONABLE_SCHEMA | 1)

// A module's node that is not serial.
class UnstorableNode : public QFObject {
  DECLARE_DYNAMIC(UnstorableNode)
};
IMPLEMENT_DYNAMIC(UnstorableNode, QFObject)

constexpr unsigned kLost = 0x9001;

// A node of schema 8 (object 2 of the archive) up to its field 9; the caller appends the owner and the rest.
RecordBytes NodeUpToOwner() {
  RecordBytes bytes;
  bytes.NewClass("QFObject", 8).Class(1).NewClass("QFBaseObject", 2).Word(0);
  return bytes.Text(_T("")).Text(_T("")).Text(_T("")).Text(_T("")).Dword(1).Dword(0);
}

std::pair<std::unique_ptr<LinkNode>, std::unique_ptr<LinkNode>> LoadedPair(const std::string& bytes) {
  Reader reader(bytes);
  LinkNode *first = nullptr, *second = nullptr;
  reader.ar >> first >> second;
  return {std::unique_ptr<LinkNode>(first), std::unique_ptr<LinkNode>(second)};
}

class References : public testing::Test {
 protected:
  void SetUp() override { InitialiseSerializationStatus(0); }
  void TearDown() override { EXPECT_EQ(g_live, 0); }
  TestDocument document_{38.0f};
};

}  // namespace

TEST_F(References, OwnerThatCantBeStoredBecomesNull) {
  UnstorableNode foreign;
  LinkNode plain(_T("node")), node(_T("node")), middle(_T("middle"));
  middle.AddToUserObjectsList(&plain, 0);
  middle.AddToUserObjectsList(&foreign, 0);
  const std::string expected = Store([&](CArchive& ar) { ar << &plain; });
  EXPECT_EQ(GetSerializationStatus(), 0u);
  EXPECT_THROW(Store([&](CArchive& ar) { ar << &middle; }), CArchiveException) << "a user is not left out";
  for (QFObject* owner : {static_cast<QFObject*>(&foreign), static_cast<QFObject*>(&middle)}) {
    InitialiseSerializationStatus(0);
    node.SetOwner(owner);
    EXPECT_EQ(Hex(Store([&](CArchive& ar) { ar << &node; })), Hex(expected)) << "fails inside: " << (owner == &middle);
    EXPECT_EQ(GetSerializationStatus(), kLost);
  }
}

TEST_F(References, OriginalOwnerThatCantBeStoredBecomesNull) {
  UnstorableNode foreign;
  LinkNode node, next(_T("next"));
  node.SetOriginalOwner(&foreign);
  const std::string bytes = Store([&](CArchive& ar) { ar << &node << &next; });
  EXPECT_EQ(GetSerializationStatus(), kLost);
  EXPECT_EQ(GetErrorLocation(), 0x1000u);
  const auto [first, second] = LoadedPair(bytes);
  EXPECT_EQ(first->GetOriginalOwner(), nullptr);
  EXPECT_EQ(second->Name(), _T("next"));
  node.SetOriginalOwner(nullptr);
}

TEST_F(References, FullDiskIsNoLostReference) {
  BYTE block[64];
  CMemFile small(block, sizeof block);
  CArchive ar(&small, CArchive::store, 128);
  LinkNode owner(CString(TCHAR('x'), 500)), node;
  node.SetOwner(&owner);
  EXPECT_THROW(ar << &node, CFileException);
  EXPECT_EQ(GetSerializationStatus(), 0u);
  ar.Abort();
}

TEST_F(References, BrokenOriginalOwnerIsForgotten) {
  const struct {
    const char* what;
    RecordBytes reference;
  } rows[] = {
      {"an object of another class", RecordBytes().NewClass("CObList", 0)},
      {"a class that nobody knows", RecordBytes().NewClass("QFNobody", 1)},
      {"a number not given out yet", RecordBytes().Object(99)},
      {"a class in place of an object", RecordBytes().Object(1)},
  };
  for (const auto& row : rows) {
    std::string bytes = NodeUpToOwner().Null().Text(_T("")).Word(0).Get() + row.reference.Get();
    bytes += RecordBytes().Dword(0x00010203).Null().Text(_T("R")).Get();
    const auto node = LoadedObject<QFObject>(bytes);
    EXPECT_EQ(node->GetOriginalOwner(), nullptr) << row.what;
    EXPECT_EQ(node->GetDisplayColor(), 0x00010203u) << row.what;
    EXPECT_EQ(node->GetRegNameForAutoIndexing(), _T("R")) << row.what;
  }
}

TEST_F(References, OriginalOwnerThatIsTheOwnerIsForgottenByLoadingAndRestoring) {
  LinkNode owner(_T("owner")), node(_T("node"));
  node.SetOwner(&owner);
  node.Recycle();
  ASSERT_EQ(node.GetOriginalOwner(), &owner);
  EXPECT_EQ(owner.GetCountOfUserObjects(), 1);
  const std::string bytes = Store([&](CArchive& ar) { ar << &node << &owner; });
  const auto [loaded, loadedOwner] = LoadedPair(bytes);
  EXPECT_EQ(loaded->GetOwner(), loadedOwner.get());
  EXPECT_EQ(loaded->GetOriginalOwner(), nullptr);
  EXPECT_EQ(loaded->GetState(), DELETED);
  loadedOwner->RemoveFromUserObjectsList(loaded.get());
  node.Restore();
  EXPECT_EQ(node.GetOwner(), &owner);
  EXPECT_EQ(node.GetOriginalOwner(), nullptr);
  EXPECT_EQ(owner.GetCountOfUserObjects(), 0);
}

TEST_F(References, FaultsInUsersAndPatternManagersRaiseInTheirPlace) {
  const auto users = [](const RecordBytes& list) {
    return RecordBytes().NewClass("QFObject", 8).Class(1).NewClass("QFBaseObject", 2).Bytes(list.Get());
  };
  const auto manager = [](const RecordBytes& reference) {
    return NodeUpToOwner().Null().Text(_T("")).Word(0).Null().Dword(0).Bytes(reference.Get());
  };
  const struct {
    RecordBytes bytes;
    int cause;
  } rows[] = {
      {users(RecordBytes().Word(1).NewClass("QFNobody", 1)), CArchiveException::genericException},
      {users(RecordBytes().Word(1).Object(99)), CArchiveException::genericException},
      {users(RecordBytes().Word(1)), CArchiveException::genericException},
      {users(RecordBytes().Word(0xFFFF).Dword(0x7FFFFFFF)), CArchiveException::genericException},
      {manager(RecordBytes().NewClass("QFObject", 8)), CArchiveException::badClass},
      {manager(RecordBytes().Object(2)), CArchiveException::badClass},
      {manager(RecordBytes().Object(99)), CArchiveException::badIndex},
  };
  for (const auto& row : rows) EXPECT_EQ(LoadCause<QFObject>(row.bytes.Get()), row.cause) << Hex(row.bytes.Get());
  const RecordBytes nested = RecordBytes().Word(1).Class(1).Class(1).Class(3).Bytes(rows[0].bytes.Get().substr(34));
  try {
    LoadedObject<QFObject>(users(nested).Get());
    FAIL() << "loaded";
  } catch (const CArchiveException& failure) {
    EXPECT_STREQ(failure.what(), "archive failure: object of an unknown or unexpected class: QFNobody (byte 44)");
    EXPECT_EQ(failure.m_strFileName, _T(""));
  }
}

TEST_F(References, FailedLoadOfNodesThatUseOneAnotherIsTakenBack) {
  LinkNode nodes[4];
  for (LinkNode& node : nodes) {
    for (LinkNode& other : nodes) node.AddToUserObjectsList(&other, 0);
    node.SetOwner(&nodes[0]);
    node.SetOriginalOwner(&nodes[3]);
  }
  const std::string bytes = Store([&](CArchive& ar) { ar << &nodes[0]; });
  const int before = g_live;
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_NE(LoadCause<QFObject>(bytes.substr(0, length)), CArchiveException::none);
    EXPECT_EQ(g_live, before) << length;
  }
  for (LinkNode& node : nodes) node.DetachFromAllUserObjects();
}
