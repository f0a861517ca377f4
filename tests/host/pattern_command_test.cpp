// kestrova pattern: where the instances of each kind are, what a change writes, and damaged patterns in documents.
#include <fmt/format.h>

#include <cmath>

#include "host/document/document_check.h"
#include "host/document/object_archive.h"
#include "host/document/pattern_kinds.h"
#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"
#include "tests/archive_bytes.h"
#include "tests/host/document_fixture.h"
#include "tests/host/run_command.h"

namespace {

class PatternCommand : public kvtest::CommandTest {
 protected:
  PatternCommand() : CommandTest("pattern") { NewDocument("part.kvdoc", {"--nodes", "12"}); }

  const std::string part_ = File("part.kvdoc");
};

// The feature is a hole, 10 mm beside the axis of the circular patterns.
TEST_F(PatternCommand, InstancesOfEachKindAreAtTheirPlaces) {
  const struct {
    const char* options;
    const char* offsets;  // from the first instance, in mm
  } rows[] = {
      {"linear --direction 1,0,0 --spacing 20 --count 3", "0,0,0 20,0,0 40,0,0"},
      {"linear --direction 0,3,0 --spacing 1in --count 1 --direction2 0,0,-1 --spacing2 5 --count2 2", "0,0,0 0,0,-5"},
      {"linear --direction 1,0,0 --spacing 1 --count 2 --direction2 0,1,0 --spacing2 7 --count2 2",
       "0,0,0 1,0,0 0,7,0 1,7,0"},
      {"polyline --points 0,0 10,0 10,30 --count 5", "0,0,0 10,0,0 10,10,0 10,20,0 10,30,0"},
      {"polyline --points 0,0 10,0 10,10 0,10 0,0 --count 4", "0,0,0 10,0,0 10,10,0 0,10,0"},
      {"polyline --points 5,5 5,5,8 --count 1", "0,0,0"},
      {"circular --angle 90 --count 3 --centre @", "0,0,0 -10,10,0 -20,0,0"},
      {"circular --angle 360 --total --count 4 --centre @", "0,0,0 -10,10,0 -20,0,0 -10,-10,0"},
      {"circular --angle 180 --total --count 3 --centre @", "0,0,0 -10,10,0 -20,0,0"},
      {"circular --angle 90 --axis 0,0,-2 --count 2 --centre @", "0,0,0 -10,-10,0"},
  };
  std::string centre;
  for (const auto& row : rows) {
    std::vector<std::string> words = {"add", part_, "7", "--force", "--kind"};
    for (const std::string& word : kvtest::WordsOf(row.options)) words.push_back(word == "@" ? centre : word);
    Out(words);
    const nlohmann::json places = Json({"list", part_, "7"})["patterns"][0]["places"];
    const auto coordinate = [&](const nlohmann::json& place, int axis) { return double(place["position"][axis]); };
    std::string offsets;
    for (const auto& place : places) {
      for (int axis = 0; axis < 3; ++axis)
        offsets += fmt::format("{}{}",
                               axis > 0          ? ","
                               : offsets.empty() ? ""
                                                 : " ",
                               std::round((coordinate(place, axis) - coordinate(places[0], axis)) * 1e6) / 1e6 + 0.0);
    }
    EXPECT_EQ(offsets, row.offsets) << row.options;
    centre = fmt::format("{},{}", coordinate(places[0], 0) - 10, coordinate(places[0], 1));
  }
}

TEST_F(PatternCommand, ChangesAreSavedShownAndSurviveARebuild) {
  Out({"add", part_, "7", "--kind", "linear", "--direction", "1,0,0", "--spacing", "20", "--count", "5"});
  Out({"skip", part_, "7", "1,3-4"});
  Out({"skip", part_, "7", "3", "--activate"});
  Out({"order", part_, "7", "--operation", "9", "--by", "reverse"});
  Out({"order", part_, "7", "--operation", "8", "--instances", "3,0-1"});
  Out({"order", part_, "7", "--operation", "10", "--by", "nearest"});
  Out({"order", part_, "7", "--operation", "10", "--clear"});
  const std::string text =
      "linear, 5 x 1, spacing 20mm; 3 of 5 instances active, skipped 1, 4; order for operation 9, 8\n";
  EXPECT_EQ(Out({"rebuild", part_}), "HostFeature 7 \"Tapped Hole 2\": " + text);
  const std::string shown = kvtest::RunCommand({"document", "show", part_}).out;
  EXPECT_NE(shown.find("\n      pattern: " + text), std::string::npos) << shown;
  const nlohmann::json orders = Json({"list", part_})["patterns"][0]["orders"];
  EXPECT_EQ(orders,
            nlohmann::json::parse(R"([{"operation":9,"instances":[3,2,0]},{"operation":8,"instances":[3,0,1]}])"));
  EXPECT_EQ(kvtest::RunCommand({"document", "verify", part_}).exit_code, 0);
  const std::string before = kvtest::ReadFile(part_);
  EXPECT_EQ(Run({"skip", part_, "7", "2,9"}).exit_code, 2);
  EXPECT_EQ(kvtest::ReadFile(part_), before) << "nothing of a wrong change is written";
}

using kvtest::DocumentTest;

TEST_F(DocumentTest, FaultsOfPatternsAreFoundAndRepaired) {
  using namespace kestrova;
  auto& feature = Add<HostFeature>(nullptr, _T("F"));
  auto& operation = Add<HostOperation>(&feature, _T("O"));
  HostOperation stranger;
  const auto pattern = [&] { return feature.GetPatternMgr()->GetPatternInfo(); };
  CArray<int, int&> order;
  const std::string lost = "1 reference to an object outside the document";
  const struct {
    std::function<void()> damage;
    std::string findings;
  } rows[] = {
      {[] {}, ""},
      {[&] { feature.GetPatternMgr()->SetPatternInfo(nullptr, 1); },
       "HostFeature \"F\" has a pattern without a description"},
      {[&] {
         feature.GetPatternMgr()->SetPatternInfo(new HostLinearPattern({FRXAxis, 1e9, 2}, {}), 1);
       },
       "HostFeature \"F\" has a pattern whose parameters are invalid"},
      {[&] { operation.RemoveFromUserObjectsList(pattern()->GetPatternOptimMgr()); },
       "HostFeature 1 \"F\" has 1 use that only one side has"},
      {[&] { pattern()->SetOptimizedList(&stranger, order); },
       "HostFeature 1 \"F\" has " + lost + "|objects in no list of the document: 1 HostOperation"},
      {[&] { feature.GetPatternMgr()->SetOwner(&operation); }, "HostFeature 1 \"F\" has " + lost},
  };
  for (const auto& row : rows) {
    feature.DestroyPattern();
    feature.CreatePattern();
    feature.GetPatternMgr()->SetPatternInfo(new HostLinearPattern({FRXAxis, 0.01, 2}, {}), 1);
    pattern()->SetOptimizedList(&operation, order);
    row.damage();
    std::string bytes = kvtest::Store([&](CArchive& ar) { ar.WriteObject(&document_); });
    CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
    LoadReport report, second;
    const auto loaded = ReadObjectArchive(file, /*salvage=*/true, report);
    loaded->CorrectIndexer();
    CheckDocument(*loaded, CheckMode::kRepair, report);
    std::string findings;
    for (const auto& finding : report.findings) findings += (findings.empty() ? "" : "|") + finding.text;
    EXPECT_EQ(findings, row.findings);
    CheckDocument(*loaded, CheckMode::kReport, second);
    EXPECT_EQ(second.findingCount, 0u) << row.findings;
  }
}

}  // namespace
