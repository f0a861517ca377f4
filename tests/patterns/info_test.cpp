// Descriptions of patterns: counts, markers on the screen, picks, skipped instances and orders.
#include <gtest/gtest.h>

#include "tests/display/display_log.h"
#include "tests/objects/dumped.h"
#include "tests/patterns/row_pattern.h"
#include "tests/registered.h"

using namespace kvtest;

TEST(PatternInfo, BaseClassHasOneActiveInstanceWithoutTransform) {
  QFPatternInfo info;
  FRTransf transform = GetTranslateTransf({1, 2, 3});
  EXPECT_EQ(info.GetNumPatternInstances(), 1);
  EXPECT_EQ(info.GetTransfForInst(0, transform), ePatternInstanceNone);
  EXPECT_TRUE(transform == GetTranslateTransf({1, 2, 3})) << "untouched";
  EXPECT_EQ(info.GetInstanceStatus(0), ePatternInstanceActive);
  EXPECT_EQ(info.Rebuild() + info.SetInstanceStatus(0, ePatternInstanceNotActive) + info.GetPatternType() +
                int(info.GetIsPatterNotFullyDefined()) + info.CompareParametersPatternInfo(&info) +
                info.CopyParameters(nullptr),
            0);
  EXPECT_EQ(info.Clone(), nullptr);
  EXPECT_EQ(info.IsOptimListsEmpty(), 1);
  QFPattInstToSkip skip;
  EXPECT_EQ(skip.GetName(), _T(""));
  EXPECT_EQ(skip.Clone(), nullptr);
  EXPECT_EQ(skip.CopyParameters(&skip), 0);
}

TEST(PatternInfo, SkippedInstancesAreCountedByTheirList) {
  RowPattern info("11111"), copy("11");
  auto *first = new RowSkip, *second = new RowSkip, *stranger = new RowSkip;
  info.Skip(first);
  info.Skip(second);
  info.SetRefPosOfObject({4, 5, 6});
  EXPECT_EQ(info.GetNumInstancesToSkip(), 2);
  EXPECT_EQ(info.GetNumActivePatternInstances(), 3) << "whatever the statuses are";
  EXPECT_EQ(copy.CopyParameters(&info), 1);
  EXPECT_EQ(copy.CopyParameters(&copy), 1);
  EXPECT_TRUE(copy.GetRefPosOfObject() == FRPosition(4, 5, 6));
  EXPECT_EQ(copy.GetNumActivePatternInstances(), 0);
  RowSkip::cloned = false;
  EXPECT_EQ(copy.CopyParameters(&info), 1);
  RowSkip::cloned = true;
  CObList all;
  copy.GetAllInstancesToSkip(all);
  EXPECT_EQ(all.GetCount(), 2) << "what Clone returned as null is copied";
  EXPECT_EQ(all.GetHead(), nullptr);
  info.DeleteInstanceToSkip(stranger);
  info.DeleteInstanceToSkip(first);
  EXPECT_EQ(RowSkip::live, 2) << "a stranger is not deleted";
  EXPECT_EQ(info.GetNumInstancesToSkip(), 1);
  info.DeleteAllInstancesToSkip();
  EXPECT_EQ(info.GetNumInstancesToSkip(), 0);
  delete stranger;
}

TEST(PatternMarkers, ColourChangesOnlyWithTheStatus) {
  const struct {
    const char* statuses;
    const char* log;  // E: an ellipse; B and R: the colour becomes blue and red
  } rows[] = {{"", ""}, {"111", "BEEE"}, {"1221", "BEREEBE"}, {"011", "EBEE"}, {"1013", "BEREBERE"}};
  Register({});
  for (const auto& row : rows) {
    std::string log, expected;
    QFDisplayInfo display(0, nullptr, FRTransf());
    display.SetDisplay(new DisplayLog(log));
    RowPattern info(row.statuses);
    info.SetRefPosOfObject({1, 2, 3});
    EXPECT_EQ(info.Display(&display), 1);
    EXPECT_EQ(info.HighLight(-1, &display), 0);
    EXPECT_EQ(info.Display(nullptr), 0);
    int instance = 0;
    for (const char kind : std::string(row.log))
      expected += kind == 'E' ? fmt::format("ellipse ({} 2 3) 6 6 1\n", 1 + 10 * instance++)
                              : fmt::format("uninitialise\ninitialise {} 1\n", kind == 'B' ? "ff0000" : "ff");
    EXPECT_EQ(log, expected) << row.statuses;
  }
}

TEST(PatternPicks, AreNearerThanThreeOnTheScreen) {
  const struct {
    FRPosition screen;
    int index;
    int toggled;
    const char* statuses;
  } rows[] = {
      {{103, 0, 0}, -1, 0, "1210"}, {{102.999, 0, 0}, 0, 1, "2210"}, {{110, 2, 0}, 1, 1, "1110"},
      {{130, 0, 0}, 3, 0, "1210"},  {{100, 0, 3}, -1, 0, "1210"},    {{120, 0, 2.9}, 2, 1, "1220"},
  };
  for (const auto& row : rows) {
    RowPattern info("1210");
    info.SetRefPosOfObject({0, 0, 50});  // the height does not count
    const FRTransf view = GetTranslateTransf({100, 0, 7});
    int index = 9;
    const auto status = info.CheckInstanceAvailableAtScreenPos(view, row.screen, index);
    EXPECT_EQ(index, row.index) << row.screen.x();
    EXPECT_EQ(status, index < 0 ? ePatternInstanceActive : info.GetInstanceStatus(index)) << row.screen.x();
    EXPECT_EQ(info.ToggleSelectInstanceAtScreenPos(view, row.screen), row.toggled) << row.screen.x();
    EXPECT_EQ(info.statuses, row.statuses) << row.screen.x();
  }
  RowPattern info("11");
  int index = 9;
  info.CheckInstanceAvailableAtScreenPos(GetScaleTransf(0.01), {0.05, 0, 0}, index);
  EXPECT_EQ(index, 0) << "the lower number of two";
}

TEST(PatternOrders, TransformsFallBackAndIndicesDont) {
  Patterned operation, other;
  RowPattern info("111111111");
  Order order({4, 3, 2, 1, 0}), shorter({8});
  EXPECT_EQ(info.GetIndexForInstOptimised(7, &operation), 7) << "no orders";
  EXPECT_EQ(info.SetOptimizedList(&operation, order), 1);
  const struct {
    int position;
    QFObject* object;
    int instance, index;
  } rows[] = {{0, &operation, 4, 4}, {4, &operation, 0, 0}, {7, &operation, 7, -1},
              {3, &other, 3, -1},    {3, nullptr, 3, 3},    {-1, &other, -1, -1}};
  for (const auto& row : rows) {
    FRTransf transform = GetScaleTransf(3);
    info.GetTransfForInstOptimised(row.position, transform, row.object);
    EXPECT_EQ(info.asked, row.instance) << row.position;
    EXPECT_EQ(transform.get_scaling_part(), 1) << "starts from the identity";
    EXPECT_EQ(info.GetIndexForInstOptimised(row.position, row.object), row.index) << row.position;
  }
  EXPECT_THROW(info.GetIndexForInstOptimised(-1, &operation), std::out_of_range);
  info.SetOptimizedList(&other, order);
  info.SetOptimizedList(&operation, shorter);
  CObList all;
  info.GetPatternOptimMgr()->GetAllOptimLists(all);
  ASSERT_EQ(all.GetCount(), 2);
  EXPECT_EQ(static_cast<QFPattOptimizedList*>(all.GetHead())->GetIndex(0), 8) << "replaced in its place";
  EXPECT_EQ(info.GetPatternOptimMgr()->GetCount(&operation), 1);
  EXPECT_EQ(info.GetPatternOptimMgr()->GetCount(nullptr), 0);
}

TEST(PatternOrders, GoWithTheirObjectsAndAreCopiedForActiveOnes) {
  RowPattern info("111"), copy("111");
  Order order({2, 1, 0});
  Patterned active, suppressed;
  suppressed.SetState(SUPPRESSED);
  {
    Patterned gone;
    for (QFObject* object : std::initializer_list<QFObject*>{&gone, nullptr, &suppressed, &active})
      info.SetOptimizedList(object, order);
    copy.SetPatternOptimMgr(&info);
    EXPECT_EQ(gone.GetCountOfUserObjects(), 1) << "a copy is not in the stored list of users";
  }
  const auto count = [](RowPattern& pattern) {
    CObList all;
    if (pattern.GetPatternOptimMgr()) pattern.GetPatternOptimMgr()->GetAllOptimLists(all);
    return all.GetCount();
  };
  EXPECT_EQ(count(info), 3) << "the object of one has gone";
  EXPECT_EQ(count(copy), 1) << "active objects only, and one of those has gone";
  CObList valid;
  valid.AddTail(&active);
  info.CorrectOptimList(valid);
  EXPECT_EQ(count(info), 2) << "an order without an object stays";
  EXPECT_EQ(suppressed.GetCountOfUserObjects(), 0);
  EXPECT_EQ(info.RemoveFromUserObjectsList(&active), 1);
  EXPECT_EQ(info.RemoveFromUserObjectsList(&active), 0);
  EXPECT_EQ(active.GetCountOfUserObjects(), 0);
  info.ClearOptimList();
  EXPECT_EQ(info.GetPatternOptimMgr(), nullptr);
  copy.SetPatternOptimMgr(&info);
  EXPECT_EQ(copy.IsOptimListsEmpty(), 1);
}

TEST(PatternOrders, DumpIsExact) {
  QFPattOptimizMgr orders;
  orders.SetOptimizedList(nullptr, Order({5, -1}));
  EXPECT_EQ(Dumped([&](FILE* file) { orders.DumpData(file); }),
            DumpBanner("QFPattOptimizMgr Start") +
                "\nDumping for m_OptimLists Start\n\n m_OptimLists Total Items : 1\n\n m_OptimLists count: 0\n" +
                DumpBanner("QFPattOptimizedList Start") +
                "\nDumping for m_OptIndices Start\n\n m_OptIndices Total Items : 2\n"
                "\n m_OptIndices Item: 0 : 5\n\n m_OptIndices Item: 1 : -1\n"
                "\nDumping for m_OptIndices End\n\nDumping for m_pObjIdentifier Start\n"
                "\nDumping for m_pObjIdentifier End\n" +
                DumpBanner("QFPattOptimizedList End") + "\nDumping for m_OptimLists End\n" +
                DumpBanner("QFPattOptimizMgr End"));
}
