// A node and the others: its state under its owners, the common state of its children, and the objects that use it.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "framework/ob_list.h"
#include "share/objects/object.h"
#include "share/objects/user_objects.h"
#include "tests/scratch.h"
#include "tests/values.h"

namespace {

class FixedNode : public QFObject {
 public:
  int IsEditable() const override { return editable; }
  int IsSuppressed1() const override { return suppressed ? suppressed : QFObject::IsSuppressed1(); }
  int editable = 1, suppressed = 0;
};

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

TEST(States, ChangeAlongTheTable) {
  const std::tuple<const char*, QFObjState, void (*)(QFObject&), QFObjState> rows[] = {
      {"suppressing", ACTIVE, [](QFObject& node) { node.SetState(SUPPRESSED); }, SUPPRESSED},
      {"no state", SUPPRESSED, [](QFObject& node) { node.SetState(QFObjState(4)); }, SUPPRESSED},
      {"no state", SUPPRESSED, [](QFObject& node) { node.SetState(QFObjState(-1)); }, SUPPRESSED},
      {"locking", SUPPRESSED, [](QFObject& node) { EXPECT_EQ(node.LockThis(), 1); }, LOCKED},
      {"unlocking", LOCKED, [](QFObject& node) { EXPECT_EQ(node.UnLockThis(), 1); }, ACTIVE},
      {"recycling", LOCKED, [](QFObject& node) { EXPECT_EQ(node.Recycle(), 1); }, DELETED},
      {"restoring", DELETED, [](QFObject& node) { EXPECT_EQ(node.Restore(), 1); }, ACTIVE},
  };
  for (const auto& [what, before, change, after] : rows) {
    QFObject node;
    node.SetState(before);
    change(node);
    EXPECT_EQ(
        kvtest::Values(node.GetState(), node.IsLocked(), node.IsLockedCheckOnly(), node.CanEditLabel(),
                       node.IsRecycled(), node.IsSuppressed()),
        kvtest::Values(after, after == LOCKED, after == LOCKED, after != LOCKED, after == DELETED, after == SUPPRESSED))
        << what;
  }
}

TEST(States, SuppressionComesDownFromOwnersAndLocksDont) {
  FixedNode top, middle, leaf;
  leaf.SetOwner(&middle);
  middle.SetOwner(&top);
  const auto expect = [&](int suppressed, const char* what) {
    EXPECT_EQ(leaf.IsSuppressed(), suppressed) << what;
    EXPECT_EQ(leaf.CanSuppress(), !suppressed) << what;
  };
  expect(0, "all active");
  EXPECT_EQ(top.CanSuppress(), 1);
  top.SetState(SUPPRESSED);
  expect(1, "the top one suppressed");
  EXPECT_EQ(leaf.GetState(), ACTIVE) << "and nowhere else stored";
  top.SetState(LOCKED);
  expect(0, "the top one locked");
  EXPECT_EQ(middle.CanLock(), 0);
  EXPECT_EQ(leaf.CanLock(), 1) << "only the owner is asked";
  middle.editable = 0;
  expect(1, "the owner not editable");
  middle.editable = 1;
  top.suppressed = 5;
  expect(1, "any nonzero answer");
}

TEST(States, RingsAndEndlessChainsOfOwnersEnd) {
  QFObject a, b;
  a.SetOwner(&b);
  b.SetOwner(&a);
  EXPECT_EQ(a.IsSuppressed(), 0);
  EXPECT_EQ(a.GetPatternDirectionRestriction(), nullptr);
  EXPECT_EQ(a.GetLinearPatternDirectionRestriction(), nullptr);
  std::vector<std::unique_ptr<QFObject>> chain(1'000'000);
  for (std::size_t i = 0; i < chain.size(); ++i) {
    chain[i] = std::make_unique<QFObject>();
    if (i != 0) chain[i]->SetOwner(chain[i - 1].get());
  }
  chain[0]->SetState(SUPPRESSED);
  EXPECT_EQ(chain.back()->IsSuppressed(), 0) << "too far up to matter";
  EXPECT_EQ(chain[4000]->IsSuppressed(), 1);
}

TEST(States, StatusWordIsClearedByLogicalNegation) {
  const std::tuple<unsigned short, unsigned short, int, int> rows[] = {
      {7, 0, 0, 1}, {6, 8, 0, 0}, {0x8000, 2, 7, 0x8002}, {0, 0xFFFF, 1, 0xFFFF}};
  for (const auto& [before, bits, on, after] : rows) {
    QFObject node;
    node.SetNodeStatus(before, 1);
    node.SetNodeStatus(bits, on);
    EXPECT_EQ(node.GetNodeStatus(0xFFFF), after) << before << " " << bits << " " << on;
  }
}

TEST(ChildrenStates, GoByTheFirstChildUpToTheFirstNull) {
  // Each letter is a child: S has the property, n has not, 0 is null, x is no node.
  const std::pair<const char*, int> rows[] = {{"", 3},   {"SSS", 1}, {"nnn", 2}, {"SSn", 0}, {"nS", 0},
                                              {"0S", 2}, {"S0n", 1}, {"xS", 2},  {"Sx", 1}};
  FixedNode with, without;
  CObList noNode;
  with.SetNodeStatus(2, 1);
  with.SetState(LOCKED);
  with.suppressed = 1;
  without.SetNodeStatus(4, 1);
  for (const auto& [letters, expected] : rows) {
    CObList children;
    for (const char* at = letters; *at; ++at) {
      CObject* child = *at == 'S' ? &with : *at == 'n' ? &without : nullptr;
      children.AddTail(*at == 'x' ? static_cast<CObject*>(&noNode) : child);
    }
    QFObject node;
    EXPECT_EQ(int(node.GetChildrenDisplayState(&children)), expected) << letters;
    EXPECT_EQ(int(node.GetChildrenSuppressedState(&children)), expected) << letters;
    EXPECT_EQ(int(node.GetChildrenLockedState(&children)), expected) << letters;
  }
  QFObject node;
  EXPECT_EQ(node.GetChildrenDisplayState(nullptr), e_QFSelSetDisplay_NoChildren);
  // Values are compared, not only zero and nonzero.
  FixedNode two;
  two.suppressed = 2;
  CObList children;
  children.AddTail(&with);
  children.AddTail(&two);
  EXPECT_EQ(node.GetChildrenSuppressedState(&children), e_QFSelSetSuppress_Mixed);
}

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
