// Failed loads of a module's nodes, whose destructors call the nodes that they use: truncated and changed bytes.
#include <gtest/gtest.h>

#include <fmt/format.h>

#include <functional>
#include <set>

#include "share/objects/object.h"
#include "share/objects/serialize_notify.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"

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
    if (ar.IsStoring()) {
      ar << tool;
    } else {
      QFSerializeNotify::RegisterForNotification(this);
      ar >> tool;
    }
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
