// Identity, stamps, companion, merging, copying and dump of a node.
#include <gtest/gtest.h>

#include <regex>

#include "share/env/app_env.h"
#include "share/objects/object.h"
#include "share/objects/object_indexer.h"
#include "tests/objects/dumped.h"
#include "tests/objects/test_document.h"
#include "tests/scratch.h"

using namespace kvtest;

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

class StampedNode : public QFObject {
 public:
  CString GetClassNameW() override { return _T("StampedNode"); }
  StampedNode() {
    m_Label = _T("Bohrung %s ü");
    SetStamps({_T("maker"), _T("01/02/2003::04:05"), _T("06/07/2008::09:10"), _T("changer")});
  }
};

class Node : public testing::Test {
 protected:
  void SetUp() override {
    UseRegistry(folder_.Path());
    CompanionNode::helper.SetCBUiObjCreate(nullptr);
  }
  void TearDown() override { EXPECT_EQ(Companion::live, 0); }
  ScratchFolder folder_;
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
  EXPECT_TRUE(std::regex_match(ToUtf8(before), std::regex(R"([01]\d/[0-3]\d/2\d{3}::[0-2]\d:[0-5]\d)")))
      << ToUtf8(before);
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
  StampedNode stamped;
  stamped.GetUiObject();
  EXPECT_EQ(stamped.GetCreatedBy() + stamped.GetDateCreated(), _T("maker01/02/2003::04:05")) << "filled in once";
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
  source.AssociateParameters(nullptr);
  source.AssociateParameters(&target);
  const auto text = [](QFObject& each) {
    return fmt::format("{}|{} {} {:x} {}|{}|{} {}", ToUtf8(each.Name()), int(each.GetState()),
                       each.GetNodeStatus(0xFFFF), each.GetDisplayColor(), int(each.GetCompareResult()),
                       ToUtf8(each.GetRegNameForAutoIndexing()), each.GetCountOfUserObjects(), each.GetObjectId());
  };
  EXPECT_EQ(text(source), "source|3 6 7 4|QFHole|1 1");
  EXPECT_EQ(text(node), "|3 6 7 4|QFHole|0 2") << "an id of its own";
  EXPECT_EQ(text(target), "source|3 0 ffffffff 0||0 3") << "state and label alone";
  EXPECT_TRUE(!node.GetOwner() && !target.GetOwner());
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

TEST(NodeDump, FilledNodeAndItsUsersAreExact) {
  TestDocument document;
  document.nextId = 4294967295u;
  QFObject user, held, owner;
  StampedNode named;
  named.SetOwner(&owner);
  StampedNode node;  // destroyed before its users
  node.AddToUserObjectsList(&named, 0);
  node.AddToUserObjectsList(&user, 0);
  node.AddToUserObjectsList(&held, 1);
  node.GetObjectId();
  node.SetState(LOCKED);
  node.SetCompareResult(PROFILE_NODEPTH_MATCH);
  node.SetMergeInProgress(1);
  node.DumpData(nullptr);
  node.DumpUserObjs(nullptr);
  const auto dump = [&](FILE* file) {
    node.DumpData(file);
    node.DumpUserObjs(file);
  };
  EXPECT_EQ(Dumped(dump),
            DumpBanner("QFObject Start") + "\n m_Label: Bohrung %s ü" + "\n m_CreatedBy: maker" +
                "\n m_DateCreated: 01/02/2003::04:05" + "\n m_LastModified: 06/07/2008::09:10" +
                "\n m_LastModifiedBy: changer" + "\n m_ObjectId: -1" + "\n m_iState : LOCKED" +
                "\n Address of this: " + Address(&node) + "\n Address of pObj: " + Address(&named) +
                "\n strObjName: StampedNode" + "\n Address of pObj: " + Address(&user) + "\n strObjName: QFObject" +
                "\n m_CompareRes : PROFILE_NODEPTH_MATCH" + "\n <---- m_pPatternMngr Start ---->" +
                "\n <---- m_pPatternMngr End ---->" + "\n m_bIsMerged : NO" + "\n m_bMergeInProgress : YES" +
                DumpBanner("QFObject End") +
                "\nDumping for ======User Objects====== Start\n\n TotalUserObjects: 2\n ----\n UserObjNo: 0"
                "\n ObjName: Bohrung %s ü\n ObjectClassName : StampedNode,  Address of pObj: " +
                Address(&named) + "\n ObjectsOwnerClassName : QFObject,  Address of ObjectsOwner: " + Address(&owner) +
                "\n ----\n UserObjNo: 1\n ObjName: \n ObjectClassName : QFObject,  Address of pObj: " + Address(&user) +
                "\nDumping for ======User Objects====== End\n");
}

TEST(NodeDump, StatesAndResultsHaveTheirTexts) {
  const char* const states[] = {"ACTIVE", "SUPPRESSED", "DELETED", "LOCKED"};
  const char* const results[] = {
      "NO_MATCH", "COMPLETE_MATCH", "PROFILE_NODEPTH_MATCH", "PARTIAL_PROFILE_MATCH", "PARTIAL_MATCH_SUBSET",
      "Nothing"};
  for (int i = 0; i < 6; ++i) {
    QFObject node;
    node.SetState(QFObjState(i % 4));
    node.SetCompareResult(COMPARE_RESULT(i));
    const std::string text = Dumped([&](FILE* file) { node.DumpData(file); });
    for (const std::string& line :
         {std::string("m_iState : ") + states[i % 4], std::string("m_CompareRes : ") + results[i]})
      EXPECT_NE(text.find("\n " + line + "\n"), std::string::npos) << line << text;
  }
}
