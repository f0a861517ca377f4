// The manager of a pattern: as its base object, its description, and the active instances.
#include <gtest/gtest.h>

#include <random>

#include "tests/objects/dumped.h"
#include "tests/patterns/row_pattern.h"
#include "tests/scratch.h"

using namespace kvtest;

TEST(PatternManager, BehavesAsItsBaseObject) {
  Patterned node, other;
  ASSERT_EQ(node.CreatePattern(), 1);
  QFObjectPatternMgr& manager = *node.GetPatternMgr();
  EXPECT_EQ(manager.GetOwner(), &node);
  EXPECT_EQ(node.GetIsUsingThisObject(&manager), 1);
  EXPECT_EQ(manager.Rebuild(), 0) << "active, without a description";
  EXPECT_EQ(manager.GetPatternActive(), 1);
  EXPECT_EQ(manager.GetNumActiveInstances() + manager.GetPatternType() + manager.CreatePattern(), 0);
  EXPECT_EQ(manager.IsOptimListsEmpty() + manager.GetIsPatternObject() + manager.CanHideDisplay(), 3);
  EXPECT_EQ(manager.GetCallbackHelper(), QFObjectPatternMgr::sCallbackHelper());
  manager.SetNodeDesc(_T("bolt circle"));
  EXPECT_EQ(manager.GetNodeDesc(), _T("bolt circle"));
  manager.SetState(SUPPRESSED);
  EXPECT_EQ(node.GetState(), SUPPRESSED);
  node.SetState(LOCKED);
  EXPECT_EQ(manager.GetState(), LOCKED) << "not its own state";
  EXPECT_EQ(manager.IsLocked() + manager.CanSuppress(), 2);
  other.SetState(SUPPRESSED);
  node.SetOwner(&other);
  EXPECT_EQ(manager.CanSuppress(), 0);
  FRPosition position;
  EXPECT_EQ(manager.GetRefPointForPattern(position), 0);
  EXPECT_TRUE(position == FRPosition(1, 2, 3));
  EXPECT_EQ(node.RebuildPattern(), 0);
  node.Repeat("1221");
  EXPECT_EQ(node.RebuildPattern(), 5);
  EXPECT_EQ(node.GetNumPattInstances(1), 4) << "no entry in the list to skip";
  EXPECT_EQ(node.GetNumPattInstances(0), 1);
  manager.SetPatternActive(0);
  EXPECT_EQ(node.GetNumPattInstances(1), 1);
}

TEST(PatternManager, StandsForItsBaseObjectInDragAndPaste) {
  Patterned node, target;
  node.CreatePattern();
  QFObjectPatternMgr* const manager = node.GetPatternMgr();
  target.welcome = &node;
  EXPECT_EQ(target.IsDragOverValid(manager, 6), 6);
  EXPECT_EQ(target.DoPaste(manager, &target, 6), 7);
  EXPECT_EQ(node.IsDragOverValid(manager, 6) + node.DoPaste(manager, &node, 6), 0) << "on its own base object";
  target.CreatePattern();
  EXPECT_EQ(target.GetPatternMgr()->IsDragOverValid(manager, 6), 6) << "one pattern on another";
  EXPECT_EQ(target.GetPatternMgr()->DoPaste(&node, nullptr, 6), 6);
  EXPECT_EQ(manager->IsDragOverValid(&node, 6) + manager->DoPaste(&node, &node, 6), 0);
}

TEST(PatternManager, OwnsOneDescription) {
  Patterned node, copy;
  RowPattern& row = node.Repeat("111");
  QFObjectPatternMgr& manager = *node.GetPatternMgr();
  EXPECT_TRUE(row.GetRefPosOfObject() == FRPosition(1, 2, 3));
  manager.SetPatternInfo(&row, /*deleteOld=*/1);
  EXPECT_EQ(RowPattern::live, 1) << "the present one is not deleted";
  auto* second = new RowPattern("1");
  manager.SetPatternInfo(second, /*deleteOld=*/0);
  EXPECT_EQ(RowPattern::live, 2);
  manager.SetPatternInfo(&row, /*deleteOld=*/1);
  EXPECT_EQ(manager.CopyParameters(static_cast<QFObjectPatternMgr*>(nullptr)), 0);
  EXPECT_EQ(manager.CopyParameters(&manager), 1);
  EXPECT_EQ(RowPattern::live, 1);
  manager.SetPatternActive(0);
  EXPECT_EQ(copy.CopyParameters(&node), 1);
  EXPECT_EQ(copy.GetPatternMgr()->GetNumActiveInstances(), 3);
  EXPECT_EQ(copy.GetPatternMgr()->GetPatternActive(), 0);
  EXPECT_EQ(copy.GetPatternMgr()->GetPatternType(), 7);
  EXPECT_EQ(copy.SetPatternMgr(nullptr), 1);
  EXPECT_EQ(RowPattern::live, 1);
}

TEST(PatternManager, InnermostBaseObjectIsFoundInAnyChain) {
  Patterned node;
  QFObjectPatternMgr inner(&node), middle(&inner), outer(&middle), alone;
  for (const QFObjectPatternMgr* manager : {&inner, &middle, &outer})
    EXPECT_EQ(manager->GetInnermostBaseObjectToPattern(), &node);
  EXPECT_EQ(alone.GetInnermostBaseObjectToPattern(), nullptr);
  EXPECT_EQ(alone.GetState(), ACTIVE) << "without a base object";
  outer.SetState(LOCKED);
  EXPECT_EQ(node.GetState(), LOCKED);
}

TEST(PatternManager, ForgetsABaseObjectThatGoesFirst) {
  auto node = std::make_unique<Patterned>();
  QFObjectPatternMgr manager(node.get());
  EXPECT_EQ(manager.RemoveFromUserObjectsList(node.get()), 0);
  EXPECT_EQ(manager.GetBaseObjectToPattern(), node.get()) << "as any node's operation";
  node.reset();
  EXPECT_EQ(manager.GetBaseObjectToPattern(), nullptr);
}

// Against a search from the first instance, for both kinds of descriptions, with changes between the calls.
TEST(PatternManager, ActiveInstancesAreThoseOfASearchFromTheStart) {
  std::mt19937 random(PrintedSeed());
  const auto below = [&](int sides) { return std::uniform_int_distribution<int>(0, sides - 1)(random); };
  for (const bool noting : {false, true}) {
    Patterned node;
    std::string statuses;
    for (int i = 0; i < 3000; ++i) statuses += char('0' + (i / 900 == 1 ? 2 : below(3)));
    RowPattern& row = node.Repeat(statuses, noting);
    for (int step = 0; step < 600; ++step) {
      if (below(3) == 0) row.SetInstanceStatus(below(3000), QFeObjectPatternInstanceStatus(below(3)));
      int n = below(2) == 0 ? step : below(1500), index = -7;
      FRTransf transform;
      ASSERT_EQ(node.GetPatternMgr()->GetTransfForActiveInstance(n, transform, index), 1);
      int expected = 0;
      for (; expected < 3000; ++expected)
        if (row.statuses[std::size_t(expected)] == '1' && --n < 0) break;
      ASSERT_EQ(index, expected) << "noting " << noting << " step " << step;
      ASSERT_EQ(row.asked, expected) << "also for the number after the last instance";
    }
    FRTransf transform;
    int index = -7;
    EXPECT_EQ(node.GetPatternMgr()->GetTransfForActiveInstance(-1, transform, index), 0);
    EXPECT_EQ(index, -7);
  }
}

TEST(PatternManager, WalkOverAllActiveInstancesAsksEachAFewTimes) {
  constexpr int kCount = 100'000;
  Patterned node;
  RowPattern& row = node.Repeat(std::string(kCount, '1'), /*noting=*/true);
  const auto walk = [&](int from, int to, int by) {
    row.statusCalls = 0;
    for (int n = from; n != to; n += by) {
      FRTransf transform;
      int index = -1;
      node.GetPatternMgr()->GetTransfForActiveInstance(n, transform, index);
      ASSERT_EQ(index, n);
    }
  };
  walk(0, kCount, 1);
  EXPECT_LT(row.statusCalls, kCount * 4);
  walk(kCount - 1, -1, -1);
  EXPECT_LT(row.statusCalls, kCount * 70) << "a block for each";
}

TEST(PatternManager, DumpHasNothingOfTheNode) {
  Patterned node;
  node.Repeat("1");
  EXPECT_EQ(Dumped([&](FILE* file) { node.GetPatternMgr()->DumpData(file); }),
            DumpBanner("QFObjectPatternMgr Start") + "\n m_bPatternActive : YES\n <---- m_pPattInfo Start ---->" +
                "\n <---- m_pPattInfo End ---->" + DumpBanner("QFObjectPatternMgr End"));
}
