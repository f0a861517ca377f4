// References between nodes that cannot be stored or are damaged; and failed loads of a module's nodes, whose
// destructors call the nodes that they use: truncated and changed bytes.
#include <fmt/format.h>

#include <set>

#include "framework/ob_list.h"
#include "share/objects/object.h"
#include "share/objects/serialize_notify.h"
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
  const std::pair<const char*, RecordBytes> rows[] = {
      {"an object of another class", RecordBytes().NewClass("CObList", 0)},
      {"a class that nobody knows", RecordBytes().NewClass("QFNobody", 1)},
      {"a number not given out yet", RecordBytes().Object(99)},
      {"a class in place of an object", RecordBytes().Object(1)},
  };
  for (const auto& [what, reference] : rows) {
    std::string bytes = NodeUpToOwner().Null().Text(_T("")).Word(0).Get() + reference.Get();
    bytes += RecordBytes().Dword(0x00010203).Null().Text(_T("R")).Get();
    const auto node = LoadedObject<QFObject>(bytes);
    EXPECT_EQ(node->GetOriginalOwner(), nullptr) << what;
    EXPECT_EQ(node->GetDisplayColor(), 0x00010203u) << what;
    EXPECT_EQ(node->GetRegNameForAutoIndexing(), _T("R")) << what;
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
  const std::pair<RecordBytes, int> rows[] = {
      {users(RecordBytes().Word(1).NewClass("QFNobody", 1)), CArchiveException::genericException},
      {users(RecordBytes().Word(1).Object(99)), CArchiveException::genericException},
      {users(RecordBytes().Word(1)), CArchiveException::genericException},
      {users(RecordBytes().Word(0xFFFF).Dword(0x7FFFFFFF)), CArchiveException::genericException},
      {manager(RecordBytes().NewClass("QFObject", 8)), CArchiveException::badClass},
      {manager(RecordBytes().Object(2)), CArchiveException::badClass},
      {manager(RecordBytes().Object(99)), CArchiveException::badIndex},
  };
  for (const auto& [bytes, cause] : rows) EXPECT_EQ(LoadCause<QFObject>(bytes.Get()), cause) << Hex(bytes.Get());
  const RecordBytes nested = RecordBytes().Word(1).Class(1).Class(1).Class(3).Bytes(rows[0].first.Get().substr(34));
  try {
    LoadedObject<QFObject>(users(nested).Get());
    FAIL() << "loaded";
  } catch (const CArchiveException& failure) {
    EXPECT_STREQ(failure.what(), "archive failure: object of an unknown or unexpected class: QFNobody (byte 44)");
    EXPECT_EQ(failure.m_strFileName, _T(""));
  }
}

namespace kvtest {

// Not in a nameless namespace: see archive_rollback_test.cpp.
class ModuleNode : public QFObject {
  DECLARE_SERIAL(ModuleNode)

 public:
  ModuleNode() { live.insert(this); }
  ~ModuleNode() override {
    live.erase(this);
    if (!tool) return;
    tool->RemoveFromUserObjectsList(this);
    tool->GetIsUsingThisObject(this);
    tool->OnPostLoadFromStorageNotify();
  }
  int RemoveFromUserObjectsList(QFObject* object) override {
    if (object == tool) tool = nullptr;
    return QFObject::RemoveFromUserObjectsList(object);
  }
  void OnPostLoadFromStorageNotify() override { ++notices; }
  void Serialize(CArchive& ar) override {
    ar.SerializeClass(RUNTIME_CLASS(ModuleNode));
    QFObject::Serialize(ar);
    if (ar.IsLoading()) QFSerializeNotify::RegisterForNotification(this);
    Exchange(ar, tool);
  }

  // Deletes all nodes, whatever damaged links they have.
  static void DeleteAll() {
    for (ModuleNode* node : live) {
      node->tool = nullptr;
      node->ForgetUsers();
    }
    while (!live.empty()) delete *live.begin();
  }

  ModuleNode* tool = nullptr;
  inline static std::set<ModuleNode*> live;
  inline static int notices = 0;
};
IMPLEMENT_SERIAL(ModuleNode, QFObject, VERSIONABLE_SCHEMA | 1)

}  // namespace kvtest

namespace {

using namespace kvtest;

class FailedLoad : public testing::Test {
 protected:
  void TearDown() override {
    ModuleNode::DeleteAll();
    QFSerializeNotify::Clear();
  }

  // Loads nodes of the bytes until one raises. Those of earlier calls then have no pointer to the others. False if none
  // raised.
  static bool Raises(std::string_view bytes, int objects) {
    Reader reader(bytes);
    std::set<ModuleNode*> earlier;
    try {
      for (; objects > 0; --objects) {
        earlier = ModuleNode::live;
        ModuleNode* node = nullptr;
        reader.ar >> node;
      }
      return false;
    } catch (const CArchiveException&) {
    }
    EXPECT_EQ(ModuleNode::live, earlier);
    for (ModuleNode* node : earlier) {
      for (CObject* user : node->UserObjectsAsTheyLie()) EXPECT_TRUE(earlier.contains(static_cast<ModuleNode*>(user)));
      for (QFObject* link : {node->GetOwner(), node->GetOriginalOwner()})
        EXPECT_TRUE(!link || earlier.contains(static_cast<ModuleNode*>(link)));
    }
    ModuleNode::notices = 0;
    QFSerializeNotify::PostLoadFromStorageNotify();
    EXPECT_LE(ModuleNode::notices, int(earlier.size()));
    return true;
  }

  static void TryEachDamage(const std::string& bytes, int objects) {
    ModuleNode::DeleteAll();  // those that were stored
    const auto attempt = [&](const std::string& damaged, const std::string& what) {
      SCOPED_TRACE(what);
      const bool raised = Raises(damaged, objects);
      EXPECT_TRUE(raised || damaged.size() == bytes.size());
      ModuleNode::DeleteAll();
      QFSerializeNotify::Clear();
    };
    for (std::size_t length = 0; length < bytes.size() && !HasFailure(); ++length)
      attempt(bytes.substr(0, length), fmt::format("{} of {} bytes", length, bytes.size()));
    for (std::size_t at = 0; at < bytes.size() && !HasFailure(); ++at) {
      for (const int change : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
        std::string damaged = bytes;
        damaged[at] = char(damaged[at] ^ change);
        attempt(damaged, fmt::format("byte {} changed by {:02X}", at, change));
      }
    }
  }

  const TestDocument document_{38.0f};
};

}  // namespace

// A tool with two operations: each damage raises or loads, and a destructor may call a deleted node.
TEST_F(FailedLoad, LeavesNothingOfNodesThatCallOneAnother) {
  auto* tool = new ModuleNode;
  ModuleNode* const operations[] = {new ModuleNode, new ModuleNode};
  for (ModuleNode* operation : operations) {
    operation->tool = tool;
    tool->AddToUserObjectsList(operation, 0);
  }
  TryEachDamage(Store([&](CArchive& ar) { ar << tool; }), 1);
}

// The first node is loaded before and stays; the second one uses it, and has it as original owner.
TEST_F(FailedLoad, TakesItsNodesOutOfThoseLoadedBefore) {
  auto *first = new ModuleNode, *second = new ModuleNode, *user = new ModuleNode;
  TryEachDamage(Store([&](CArchive& ar) {
                  ar << first;
                  second->tool = first;
                  second->SetOriginalOwner(first);
                  second->AddToUserObjectsList(user, 0);
                  user->SetOwner(first);
                  user->SetOriginalOwner(first);
                  ar << second;
                }),
                2);
}

// A user of a node that stays is not taken out when the archive deletes another one.
TEST_F(FailedLoad, LeavesTheUsersOfOtherNodesAlone) {
  auto *owner = new ModuleNode, *recycled = new ModuleNode, *stray = new ModuleNode;
  recycled->SetOriginalOwner(owner);
  Reader reader(Store([&](CArchive& ar) { ar << owner << recycled << stray; }));
  ModuleNode::DeleteAll();
  reader.ar >> owner >> recycled >> stray;
  EXPECT_EQ(reader.ar.DeleteLoaded([&](const CObject* object) { return object == stray; }), 1u);
  EXPECT_TRUE(owner->GetIsUsingThisObject(recycled));
}
