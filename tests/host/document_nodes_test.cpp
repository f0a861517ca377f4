// The nodes of a document: their overrides and the links between them.
#include <vector>

#include "framework/ob_list.h"
#include "host/document/active_document.h"
#include "host/document/operation_node.h"
#include "tests/host/document_fixture.h"

using namespace kestrova;

namespace {

class DocumentNodes : public kvtest::DocumentTest {
 protected:
  // The nodes of the tree with their depths.
  using Nodes = std::vector<std::pair<HostNode*, int>>;
  Nodes Walk() const {
    Nodes nodes;
    document_.Walk([&](HostNode& node, int depth) { nodes.emplace_back(&node, depth); });
    return nodes;
  }

  HostTool& tool_ = Add<HostTool>(nullptr, _T("Drill"));
  HostSetup& setup_ = Add<HostSetup>(nullptr, _T("Setup"));
  HostFeature& feature_ = Add<HostFeature>(&setup_, _T("Hole"));
  HostDrilling& drilling_ = Add<HostDrilling>(&feature_, _T("Drilling"));
  HostOperation& operation_ = Add<HostOperation>(&feature_, _T("Milling"));
};

TEST_F(DocumentNodes, AreInTheTreeAndTheIndexer) {
  EXPECT_EQ(Walk(), (Nodes{{&tool_, 0}, {&setup_, 0}, {&feature_, 1}, {&drilling_, 2}, {&operation_, 2}}));
  EXPECT_EQ(drilling_.GetObjectId(), 4u);
  EXPECT_EQ(tool_.GetRegNameForAutoIndexing(), _T("HostToolCrib")) << "under a name of its own";
  EXPECT_EQ(drilling_.GetRegNameForAutoIndexing(), _T("HostOperation")) << "among the operations";
  EXPECT_EQ(document_.Indexer().FindIndex(&operation_), 1) << "the second of the operations";
  EXPECT_EQ(drilling_.GetObjNamePlusObjID(), _T("HostDrilling-4"));
  EXPECT_EQ(setup_.GetParamHelper(), &setup_.Frame());
}

TEST_F(DocumentNodes, ReportWhichChangesAreAllowed) {
  EXPECT_EQ(tool_.CanSuppress(), 0);
  EXPECT_EQ(feature_.CanSuppress(), 1);
  setup_.SetState(SUPPRESSED);
  EXPECT_EQ(feature_.CanSuppress(), 0) << "below a suppressed setup";
  EXPECT_EQ(drilling_.IsSuppressed(), 1);
  setup_.SetState(ACTIVE);
  drilling_.LockThis();
  EXPECT_EQ(drilling_.CanSuppress(), 0) << "locked";
  EXPECT_EQ(document_.CanSuppress() + document_.CanLock(), 0);
  EXPECT_EQ(operation_.IsDirtyOnStockChange(), 0);
  operation_.GetFlag()->SetFlag();
  EXPECT_EQ(operation_.IsDirtyOnStockChange(), 1);
}

TEST_F(DocumentNodes, LoseTheirToolOnBothSides) {
  drilling_.SetTool(&tool_);
  EXPECT_EQ(tool_.GetIsUsingThisObject(&drilling_), 1);
  HostTool other;
  drilling_.SetTool(&other);
  EXPECT_EQ(std::pair(tool_.GetCountOfUserObjects(), other.GetCountOfUserObjects()), std::pair(0, 1));
  {
    HostTool third;
    drilling_.SetTool(&third);
  }
  EXPECT_EQ(drilling_.Tool(), nullptr) << "the tool is gone";
}

TEST_F(DocumentNodes, ClonesAreLikeTheirOriginal) {
  tool_.Set(ToolKind::kTap, 0.006, 0.05);
  setup_.Frame().SetAngle(1);
  const HostFeature::Point kProfile[] = {{0, 0}, {0.01, 0}, {0.01, 0.02}};
  feature_.SetProfile(kProfile);
  feature_.SetState(SUPPRESSED);
  drilling_.SetTool(&tool_);
  drilling_.SetCutting(0.2, 3000, 0.001);
  drilling_.SetPeck(0.002);
  drilling_.GetFlag()->SetFlag();
  for (HostNode* node : std::initializer_list<HostNode*>{&tool_, &setup_, &feature_, &drilling_}) {
    const std::unique_ptr<QFObject> copy(node->Clone());
    EXPECT_EQ(copy->GetRuntimeClass(), node->GetRuntimeClass());
    EXPECT_EQ(copy->Name(), node->Name());
    EXPECT_EQ(copy->GetState(), node->GetState());
    EXPECT_EQ(node->Compare(copy.get()), COMPLETE_MATCH) << ToUtf8(node->Name());
    EXPECT_EQ(node->Compare(&operation_), NO_MATCH) << ToUtf8(node->Name());
    EXPECT_EQ(static_cast<HostNode*>(copy.get())->Facts(), node->Facts());
    EXPECT_FALSE(document_.Owns(copy.get()));
    static_cast<HostNode*>(copy.get())->DropLinks();
  }
  EXPECT_EQ(tool_.GetCountOfUserObjects(), 1) << "the clone has left";
}

TEST_F(DocumentNodes, FeaturesAreComparedByProfileAndDepth) {
  const HostFeature::Point kSquare[] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  feature_.SetProfile(kSquare);
  const std::tuple<std::vector<HostFeature::Point>, double, COMPARE_RESULT> kCases[] = {
      {{{0, 0}, {1, 0}, {1, 1}, {0, 1.0000005}}, 0, COMPLETE_MATCH},
      {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 0.5, PROFILE_NODEPTH_MATCH},
      {{{1, 1}, {0, 0}}, 0, PARTIAL_MATCH_SUBSET},
      {{{0, 0}, {5, 5}}, 0, PARTIAL_PROFILE_MATCH},
      {{{0, 0}, {5, 5}, {6, 6}}, 0, NO_MATCH},
  };
  for (const auto& [points, depth, result] : kCases) {
    HostFeature other;
    other.SetProfile(points);
    other.SetDepth(depth);
    EXPECT_EQ(feature_.Compare(&other), result) << points.size();
  }
  FRPosition position(7, 7, 7);
  EXPECT_EQ(feature_.GetRefPointForPattern(position), 1);
  EXPECT_EQ(position, FRPosition(0, 0, 0));
  EXPECT_EQ(HostFeature().GetRefPointForPattern(position), 0);
}

TEST_F(DocumentNodes, TreeFollowsOwnersWhenItIsRebuilt) {
  feature_.SetOwner(nullptr);
  operation_.SetOwner(&drilling_);
  drilling_.SetOwner(&operation_);  // a ring
  setup_.SetOwner(&document_);      // a top node
  HostFeature outside;
  outside.AddToUserObjectsList(&operation_, /*held=*/0);
  tool_.AddToUserObjectsList(&outside, /*held=*/0);
  document_.RebuildTree();
  EXPECT_EQ(Walk(), (Nodes{{&tool_, 0}, {&setup_, 0}, {&feature_, 0}, {&operation_, 0}, {&drilling_, 1}}));
  EXPECT_EQ(tool_.GetCountOfUserObjects(), 0) << "the document doesn't hold that user";
}

// The nodes use one another; the address sanitizer finds a use after delete.
TEST_F(DocumentNodes, DropTheirLinksBeforeTheDocumentDeletesThem) {
  auto document = std::make_unique<HostDocument>();
  {
    const ActiveDocument active(document.get());
    auto& first = static_cast<HostOperation&>(document->Adopt(std::make_unique<HostOperation>(), nullptr));
    auto& tool = static_cast<HostTool&>(document->Adopt(std::make_unique<HostTool>(), &first));
    auto& last = static_cast<HostOperation&>(document->Adopt(std::make_unique<HostOperation>(), &tool));
    first.SetTool(&tool);
    last.SetTool(&tool);
    first.AddToUserObjectsList(&last, /*held=*/0);
    last.AddToUserObjectsList(&first, /*held=*/1);
    last.Recycle();
  }
  document.reset();
}

}  // namespace
