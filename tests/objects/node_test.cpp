// Identity, stamps, companion, merging and copying of a node.
#include <gtest/gtest.h>

#include <regex>

#include "share/env/app_env.h"
#include "share/objects/object.h"
#include "share/objects/object_indexer.h"
#include "tests/objects/test_document.h"
#include "tests/scratch.h"

using kvtest::TestDocument;

namespace {

class Companion : public ui_QFObject {
 public:
  explicit Companion(QFObject* object) : ui_QFObject(object) { ++live; }
  ~Companion() override { --live; }
  void ResetFlagForStockChange() override { ++resets; }

  inline static int live = 0;
  int resets = 0;
};

class CompanionNode : public QFObject {
 public:
  QFCallbackHelper* GetCallbackHelper() override { return &helper; }
  CFlaggedError* GetFlag() override { return &flag; }
  int Invalidate() override {
    sawMergeInProgress = IsMergeInProgress();
    return canInvalidate ? QFObject::Invalidate() : 0;
  }

  inline static QFCallbackHelper helper;
  CFlaggedError flag{5, FLAGGED_ERROR_STOCK};
  bool canInvalidate = true;
  int sawMergeInProgress = 0;
};

class Node : public testing::Test {
 protected:
  void SetUp() override {
    kvtest::UseRegistry(folder_.Path());
    CompanionNode::helper.SetCBUiObjCreate(nullptr);
  }
  void TearDown() override { EXPECT_EQ(Companion::live, 0); }
  kvtest::ScratchFolder folder_;
};

}  // namespace

TEST_F(Node, DrawsItsIdOnceAndAgainWhenInvalidated) {
  QFObject unregistered;
  EXPECT_EQ(unregistered.GetObjectId(), 0u);
  EXPECT_EQ(unregistered.GetObjectId(), 0u);
  EXPECT_EQ(unregistered.GetObjNamePlusObjID(), _T("QFObject-0"));
  TestDocument document;
  document.nextId = 41;
  QFObject node;
  EXPECT_EQ(unregistered.GetObjectId(), 41u) << "asked again";
  EXPECT_EQ(node.GetObjectId(), 42u);
  EXPECT_EQ(node.GetObjectId(), 42u);
  EXPECT_EQ(node.GetObjNamePlusObjID(), _T("QFObject-42"));
  node.ChangeName(_T("hole"));
  EXPECT_EQ(node.Invalidate(), 1);
  EXPECT_EQ(node.Name(), _T(""));
  EXPECT_EQ(node.GetObjectId(), 43u);
}

TEST_F(Node, CreationEntersTheIndexerAndDrawsTheId) {
  TestDocument document;
  QFObject early, node;
  early.onCreate();
  EXPECT_EQ(early.GetRegNameForAutoIndexing(), _T("")) << "no indexer";
  static QFObjectIndexerHelper indexer;
  qfshare_init([] { return &indexer; }, nullptr, nullptr, nullptr);
  node.onCreate();
  qfshare_init(nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(document.nextId, 2u) << "one id was drawn";
  EXPECT_EQ(node.GetRegNameForAutoIndexing(), _T("QFObject"));
  EXPECT_EQ(indexer.FindIndex(&node), 0);
}

TEST_F(Node, StampIsDateColonsTimeOfDay) {
  QFObject node;
  const auto now = [] { return AppEnv()->GetCurrentDate() + _T("::") + AppEnv()->GetTickCount(); };
  CString before;
  do {  // repeat if the minute changes
    before = now();
    node.UpdateLastModified();
  } while (now() != before);
  EXPECT_EQ(node.GetLastModified(), before);
  EXPECT_TRUE(std::regex_match(ToUtf8(before), std::regex(R"(\d\d/\d\d/\d{4}::\d\d:\d\d)"))) << ToUtf8(before);
  EXPECT_EQ(node.GetLastModifiedBy(), AppEnv()->GetUserNameW());
  EXPECT_EQ(node.GetCreatedBy() + node.GetDateCreated(), _T(""));
}

TEST_F(Node, FirstRequestForTheCompanionStampsTheCreation) {
  CompanionNode node;
  EXPECT_EQ(node.GetUiObject(), nullptr) << "no function set";
  EXPECT_EQ(node.GetCreatedBy(), AppEnv()->GetUserNameW());
  EXPECT_EQ(node.GetDateCreated(), node.GetLastModified());
  EXPECT_FALSE(node.GetDateCreated().IsEmpty());
  CompanionNode::helper.SetCBUiObjCreate([](QFObject* object) -> ui_QFObject* { return new Companion(object); });
  ui_QFObject* companion = node.GetUiObject();
  ASSERT_NE(companion, nullptr);
  EXPECT_EQ(companion->GetObject(), &node);
  EXPECT_EQ(node.GetUiObject(), companion);
  EXPECT_EQ(Companion::live, 1);
  struct Stamped : QFObject {
    Stamped() { SetStamps({_T("maker"), _T("then"), _T("later"), _T("changer")}); }
  } stamped;
  stamped.GetUiObject();
  EXPECT_EQ(stamped.GetCreatedBy() + stamped.GetDateCreated(), _T("makerthen")) << "filled in once";
  EXPECT_EQ(stamped.GetLastModifiedBy(), AppEnv()->GetUserNameW());
}

TEST_F(Node, StockChangeTakesTheFlagDownAndTellsTheCompanion) {
  CompanionNode::helper.SetCBUiObjCreate([](QFObject* object) -> ui_QFObject* { return new Companion(object); });
  CompanionNode node;
  node.flag.SetFlag();
  node.ResetFlagForStockChange();
  EXPECT_EQ(node.flag.GetFlag(), 0);
  EXPECT_EQ(node.flag.GetFlagErrorType(), FLAGGED_ERROR_NORMAL);
  EXPECT_EQ(node.flag.ReportError(), 5);
  EXPECT_EQ(static_cast<Companion*>(node.GetUiObject())->resets, 1) << "built on the way";
}

TEST_F(Node, MergingInvalidatesTheOther) {
  TestDocument document;
  CompanionNode node, other, stubborn;
  node.ChangeName(_T("node"));
  other.ChangeName(_T("other"));
  const unsigned id = node.GetObjectId(), otherId = other.GetObjectId();
  EXPECT_EQ(node.Merge(&other), 1);
  EXPECT_EQ(node.Name(), _T("node"));
  EXPECT_EQ(node.GetObjectId(), id);
  EXPECT_NE(other.GetObjectId(), otherId);
  EXPECT_EQ(other.IsMerged(), 1);
  EXPECT_EQ(other.sawMergeInProgress, 1);
  EXPECT_EQ(other.IsMergeInProgress(), 0);
  stubborn.canInvalidate = false;
  EXPECT_EQ(node.Merge(&stubborn), 0);
  EXPECT_EQ(stubborn.IsMerged(), 0);
}

TEST_F(Node, CopiesItsParametersAndNothingElse) {
  TestDocument document;
  QFObject node, target, owner, source;
  source.ChangeName(_T("source"));
  source.SetOwner(&owner);
  source.SetState(LOCKED);
  source.SetNodeStatus(6, 1);
  source.SetDisplayColor(7);
  source.SetCompareResult(PARTIAL_MATCH_SUBSET);
  source.SetRegNameForAutoIndexing(_T("QFHole"));
  source.AddToUserObjectsList(&owner, 0);
  source.GetObjectId();
  node.SetNodeStatus(1, 1);
  EXPECT_EQ(node.CopyParameters(nullptr), 0);
  EXPECT_EQ(node.CopyParameters(&source), 1);
  EXPECT_EQ(node.GetState(), LOCKED);
  EXPECT_EQ(node.GetNodeStatus(0xFFFF), 6);
  EXPECT_EQ(node.GetDisplayColor(), 7u);
  EXPECT_EQ(node.GetCompareResult(), PARTIAL_MATCH_SUBSET);
  EXPECT_EQ(node.GetRegNameForAutoIndexing(), _T("QFHole"));
  EXPECT_EQ(node.Name(), _T(""));
  EXPECT_EQ(node.GetOwner(), nullptr);
  EXPECT_EQ(node.GetCountOfUserObjects(), 0);
  EXPECT_EQ(node.GetObjectId(), 2u) << "an id of its own";
  source.AssociateParameters(nullptr);
  source.AssociateParameters(&target);
  EXPECT_EQ(target.Name(), _T("source"));
  EXPECT_EQ(target.GetState(), LOCKED);
  EXPECT_EQ(target.GetDisplayColor(), 0xFFFFFFFFu) << "state and label alone";
}

TEST_F(Node, MatchKeepsTheIdOfItsMoment) {
  TestDocument document;
  QFObject node, match;
  node.SetMatch(&match);
  EXPECT_EQ(node.GetMatch(), &match);
  EXPECT_EQ(node.GetMatchId(), 1u);
  match.Invalidate();
  EXPECT_EQ(node.GetMatchId(), 1u);
  node.SetMatch(nullptr);
  EXPECT_EQ(node.GetMatchId(), 0u);
}

TEST_F(Node, DefaultsMeanNotApplicable) {
  QFObject node, other;
  EXPECT_EQ(node.IsDragOverValid(&other, 1) + node.DoPaste(&other, &other, 1), 0);
  node.SetNodeDesc(_T("text"));
  EXPECT_EQ(node.GetNodeDesc(), _T("")) << "dropped";
  void* parameter = &node;
  EXPECT_EQ(node.HandleCommand(eCommandRun, 1, parameter), eThreadNotHandled);
  EXPECT_EQ(node.GetNumPattInstances(0) + node.GetNumPattInstances(1) + node.RebuildPattern(), 3);
  EXPECT_EQ(node.CreatePattern(), 0) << "its class supports none";
  QFeObjectPatternType type = QFeObjectPatternType(5);
  EXPECT_EQ(node.GetPatternRestriction(0, type), 0);
  EXPECT_EQ(type, eObjectPatternNone);
}
