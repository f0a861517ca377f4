// The objects that use a node: the two lists, the original owner, and destructors.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <vector>

#include "framework/ob_list.h"
#include "share/objects/object.h"
#include "share/objects/user_objects.h"
#include "tests/scratch.h"

namespace {

std::vector<CObject*> UsersOf(const QFObject& node) {
  CObList list;
  node.GetAllUserObjects(&list);
  std::vector<CObject*> users;
  for (POSITION at = list.GetHeadPosition(); at;) users.push_back(list.GetNext(at));
  return users;
}

// Removes itself from the lists of a deleted node, as a job record does.
class SelfRemovingUser : public QFObject {
 public:
  int RemoveFromUserObjectsList(QFObject* object) override {
    ++told;
    object->RemoveFromUserObjectsList(this);
    return 1;
  }
  int told = 0;
};

using Users = std::vector<CObject*>;

}  // namespace

// In these tests the used node is declared last, so it is destroyed before its users.
TEST(Users, StandInOneListOnce) {
  QFObject a, b, node;
  EXPECT_EQ(node.AddToUserObjectsList(&a, 0), 1);
  EXPECT_EQ(node.AddToUserObjectsList(&b, 0), 1);
  EXPECT_EQ(node.AddToUserObjectsList(&a, 0), 1);
  EXPECT_EQ(UsersOf(node), (Users{&a, &b})) << "twice leaves it in its place";
  node.AddToUserObjectsList(&a, 1);
  EXPECT_EQ(UsersOf(node), (Users{&b})) << "moved to those held";
  EXPECT_EQ(node.GetCountOfUserObjects(), 1);
  EXPECT_EQ(node.GetIsUsingThisObject(&a), 1) << "held ones count";
  node.AddToUserObjectsList(&a, 0);
  EXPECT_EQ(UsersOf(node), (Users{&b, &a}));
  EXPECT_EQ(node.RemoveFromUserObjectsList(&a), 1);
  EXPECT_EQ(node.GetIsUsingThisObject(&a), 0) << "it had left the other list";
  EXPECT_EQ(node.AddToUserObjectsList(nullptr, 0), 0);
  EXPECT_EQ(node.GetIsUsingThisObject(nullptr), 0);
  node.GetAllUserObjects(nullptr);
}

TEST(Users, OriginalOwnersListIsKeptInStep) {
  QFObject node, first, second;
  node.SetOriginalOwner(&first);
  EXPECT_EQ(UsersOf(first), (Users{&node}));
  node.SetOriginalOwner(&second);
  EXPECT_EQ(UsersOf(first), Users{});
  EXPECT_EQ(UsersOf(second), (Users{&node}));
  EXPECT_EQ(node.GetIsUsingThisObject(&second), 1);
  EXPECT_EQ(node.RemoveFromUserObjectsList(&second), 0) << "the original owner alone is no removal";
  EXPECT_EQ(node.GetOriginalOwner(), nullptr);
  EXPECT_EQ(UsersOf(second), (Users{&node}));
  second.RemoveFromUserObjectsList(&node);
}

TEST(Users, NodeThatGoesIsForgottenByAll) {
  QFObject a, b;
  SelfRemovingUser held;
  {
    QFObject node;
    node.AddToUserObjectsList(&a, 0);
    node.AddToUserObjectsList(&held, 1);
    a.AddToUserObjectsList(&node, 0);
    b.SetOriginalOwner(&node);
    EXPECT_EQ(node.GetCountOfUserObjects(), 2);
    node.AddToUserObjectsList(&node, 0);
    node.SetOriginalOwner(&node);
  }
  EXPECT_EQ(a.GetCountOfUserObjects(), 0);
  EXPECT_EQ(b.GetOriginalOwner(), nullptr);
  EXPECT_EQ(held.told, 1);
}

// The list against a vector that is searched from its beginning.
TEST(UserObjectsList, BehavesAsASearchedVector) {
  std::mt19937 random(kvtest::PrintedSeed());
  std::vector<std::unique_ptr<CObject>> objects;
  for (int i = 0; i < 300; ++i) objects.push_back(std::make_unique<CObList>());
  const auto pick = [&](std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(random); };
  for (const std::size_t kinds : {4u, 60u, 300u}) {
    UserObjects list;
    Users model;
    for (int step = 0; step < 20000; ++step) {
      CObject* object = pick(40) == 0 ? nullptr : objects[pick(kinds)].get();
      const bool there = std::find(model.begin(), model.end(), object) != model.end();
      ASSERT_EQ(list.Contains(object), there) << "step " << step;
      const std::size_t action = pick(100);
      if (action < 55 && (!there || pick(8) == 0)) {
        list.Append(object);
        model.push_back(object);
      } else if (action < 80) {
        EXPECT_EQ(list.Remove(object), there);
        std::erase(model, object);
      } else if (action < 98) {
        CObject* const head = model.empty() ? nullptr : model.front();
        EXPECT_EQ(list.RemoveHead(), head);
        if (!model.empty()) model.erase(model.begin());
      } else if (action == 98) {
        list.RemoveDuplicates();
        Users kept;
        for (CObject* each : model)
          if (std::find(kept.begin(), kept.end(), each) == kept.end()) kept.push_back(each);
        model = kept;
      } else if (pick(10) == 0) {
        list.RemoveAll();
        model.clear();
      }
      ASSERT_EQ(list.GetCount(), int(model.size())) << "step " << step;
      Users seen;
      list.ForEach([&](CObject* each) { seen.push_back(each); });
      ASSERT_EQ(seen, model) << "step " << step;
    }
  }
}
