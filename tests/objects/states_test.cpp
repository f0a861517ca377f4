// States and status word of a node, the effect of its owners, and the common state of its children.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "framework/ob_list.h"
#include "share/objects/object.h"

namespace {

class FixedNode : public QFObject {
 public:
  int IsEditable() const override { return editable; }
  int IsSuppressed1() const override { return suppressed ? suppressed : QFObject::IsSuppressed1(); }
  int editable = 1;
  int suppressed = 0;
};

}  // namespace

TEST(States, ChangeAlongTheTable) {
  const struct {
    const char* what;
    QFObjState before;
    void (*change)(QFObject&);
    QFObjState after;
  } rows[] = {
      {"suppressing", ACTIVE, [](QFObject& node) { node.SetState(SUPPRESSED); }, SUPPRESSED},
      {"no state", SUPPRESSED, [](QFObject& node) { node.SetState(QFObjState(4)); }, SUPPRESSED},
      {"no state", SUPPRESSED, [](QFObject& node) { node.SetState(QFObjState(-1)); }, SUPPRESSED},
      {"locking", SUPPRESSED, [](QFObject& node) { EXPECT_EQ(node.LockThis(), 1); }, LOCKED},
      {"unlocking", LOCKED, [](QFObject& node) { EXPECT_EQ(node.UnLockThis(), 1); }, ACTIVE},
      {"recycling", LOCKED, [](QFObject& node) { EXPECT_EQ(node.Recycle(), 1); }, DELETED},
      {"restoring", DELETED, [](QFObject& node) { EXPECT_EQ(node.Restore(), 1); }, ACTIVE},
  };
  for (const auto& row : rows) {
    QFObject node;
    node.SetState(row.before);
    row.change(node);
    EXPECT_EQ(node.GetState(), row.after) << row.what;
    EXPECT_EQ(node.IsLocked(), row.after == LOCKED) << row.what;
    EXPECT_EQ(node.IsLockedCheckOnly(), row.after == LOCKED) << row.what;
    EXPECT_EQ(node.CanEditLabel(), row.after != LOCKED) << row.what;
    EXPECT_EQ(node.IsRecycled(), row.after == DELETED) << row.what;
    EXPECT_EQ(node.IsSuppressed(), row.after == SUPPRESSED) << row.what;
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
  const struct {
    unsigned short before, bits;
    int on;
    int after;
  } rows[] = {{7, 0, 0, 1}, {6, 8, 0, 0}, {0x8000, 2, 7, 0x8002}, {0, 0xFFFF, 1, 0xFFFF}};
  for (const auto& row : rows) {
    QFObject node;
    node.SetNodeStatus(row.before, 1);
    node.SetNodeStatus(row.bits, row.on);
    EXPECT_EQ(node.GetNodeStatus(0xFFFF), row.after) << row.before << " " << row.bits << " " << row.on;
  }
}

TEST(ChildrenStates, GoByTheFirstChildUpToTheFirstNull) {
  // Each letter is a child: S has the property, n has not, 0 is null, x is no node.
  const struct {
    const char* children;
    int expected;
  } rows[] = {{"", 3}, {"SSS", 1}, {"nnn", 2}, {"SSn", 0}, {"nS", 0}, {"0S", 2}, {"S0n", 1}, {"xS", 2}, {"Sx", 1}};
  FixedNode with, without;
  CObList noNode;
  with.SetNodeStatus(2, 1);
  with.SetState(LOCKED);
  with.suppressed = 1;
  without.SetNodeStatus(4, 1);
  for (const auto& row : rows) {
    CObList children;
    for (const char* at = row.children; *at; ++at) {
      CObject* child = *at == 'S' ? &with : *at == 'n' ? &without : nullptr;
      children.AddTail(*at == 'x' ? static_cast<CObject*>(&noNode) : child);
    }
    QFObject node;
    EXPECT_EQ(int(node.GetChildrenDisplayState(&children)), row.expected) << row.children;
    EXPECT_EQ(int(node.GetChildrenSuppressedState(&children)), row.expected) << row.children;
    EXPECT_EQ(int(node.GetChildrenLockedState(&children)), row.expected) << row.children;
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
