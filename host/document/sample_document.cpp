#include "host/document/sample_document.h"

#include <algorithm>
#include <array>
#include <vector>

#include "companions/geometry/constants.h"
#include "host/document/drilling_node.h"
#include "host/document/feature_node.h"
#include "host/document/host_document.h"
#include "host/document/setup_node.h"
#include "host/document/tool_node.h"
#include "host/shell/progress_bar.h"
#include "share/core/document_callbacks.h"

namespace kestrova {
namespace {

constexpr double kMm = 0.001;
constexpr DWORD kNodesForATool = 25;
constexpr DWORD kMostTools = 60;
constexpr DWORD kToolKinds = 5;
constexpr DWORD kFeaturesInASetup = 30;

// SplitMix64. The distributions of the standard library differ between systems.
class Random {
 public:
  explicit Random(ULONGLONG seed) : state_(seed) {}

  // A number from 0 to sides - 1.
  DWORD Below(DWORD sides) {
    ULONGLONG z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return DWORD(((z ^ (z >> 31)) >> 32) * sides >> 32);
  }
  bool OneIn(DWORD chances) { return Below(chances) == 0; }
  // A multiple of a tenth between low and high, which has a short text.
  double Tenths(DWORD low, DWORD high) { return (low + Below((high - low) * 10 + 1) / 10.0); }

 private:
  ULONGLONG state_;
};

struct Step {
  LPCTSTR name;
  ToolKind tool;
};
struct FeatureKind {
  LPCTSTR name;
  DWORD corners;
  std::array<Step, 3> steps;  // a null name ends the steps
};
constexpr Step kRough = {_T("Rough Mill"), ToolKind::kFlatEndMill};
constexpr Step kContour = {_T("Contour Mill"), ToolKind::kBallEndMill};
constexpr Step kCentre = {_T("Centre Drill"), ToolKind::kCentreDrill};
constexpr Step kDrill = {_T("Drill"), ToolKind::kDrill};
constexpr FeatureKind kFeatureKinds[] = {
    {_T("Rectangular Pocket"), 4, {kRough, kContour}},
    {_T("Irregular Boss"), 7, {kRough, {_T("Rest Mill"), ToolKind::kFlatEndMill}, kContour}},
    {_T("Face"), 4, {{{_T("Face Mill"), ToolKind::kFlatEndMill}}}},
    {_T("Slot"), 6, {kRough, kContour}},
    {_T("Hole"), 1, {kCentre, kDrill}},
    {_T("Tapped Hole"), 1, {kCentre, kDrill, {_T("Tap"), ToolKind::kTap}}},
};
constexpr LPCTSTR kUsers[] = {_T("weber"), _T("okafor"), _T("lindqvist"), _T("moreau"), _T("Jos\u00E9")};

class Sample {
 public:
  Sample(HostDocument& document, DWORD nodes, ULONGLONG seed) : document_(document), left_(nodes), random_(seed) {}

  void Fill() {
    const ProgressBar bar("making nodes", left_);
    MakeTools(std::min(left_ / 4, std::clamp(left_ / kNodesForATool, kToolKinds, kMostTools)));
    while (left_ > 0) MakeSetup();
  }

 private:
  template <class Node>
  Node& Add(HostNode* owner, const CString& label) {
    auto node = std::make_unique<Node>();
    node->ChangeName(label);
    Stamp(*node);
    --left_;
    QFProgressCallback(document_.NodeCount());
    return static_cast<Node&>(document_.Adopt(std::move(node), owner));
  }

  static CString Numbered(LPCTSTR name, DWORD number) {
    CString text;
    text.Format(_T("%s %u"), name, number);
    return text;
  }

  // One draw per statement: the compiler may evaluate arguments in any order.
  CString Moment(DWORD year) {
    const DWORD month = 1 + random_.Below(12);
    const DWORD day = 1 + random_.Below(28);
    const DWORD hour = 6 + random_.Below(14);
    CString text;
    text.Format(_T("%02u/%02u/%u::%02u:%02u"), month, day, year, hour, random_.Below(60));
    return text;
  }

  CString User() { return kUsers[random_.Below(DWORD(std::size(kUsers)))]; }

  // The nodes until the next call get the same stamp.
  void BeginSession() {
    creator_ = User();
    created_ = Moment(2023);
  }

  void Stamp(HostNode& node) {
    if (!random_.OneIn(8)) return node.StampAs(creator_, created_, creator_, created_);
    const CString changer = User();
    node.StampAs(creator_, created_, changer, Moment(2024));
  }

  void MakeTools(DWORD count) {
    BeginSession();
    for (DWORD i = 0; i < count; ++i) {
      const auto kind = ToolKind(i % kToolKinds);
      const DWORD diameter = 3 + i / kToolKinds;
      CString label;
      label.Format(_T("\u00D8%u %s"), diameter, TextOf(kind));
      auto& tool = Add<HostTool>(nullptr, label);
      tool.Set(kind, diameter * kMm, (40 + random_.Below(80)) * kMm);
      tools_[std::size_t(kind)].push_back(&tool);
    }
  }

  void MakeSetup() {
    BeginSession();
    auto& setup = Add<HostSetup>(nullptr, Numbered(_T("Mill Part Setup"), ++setups_));
    static const FRUnitVector kAxes[] = {FRZAxis, -FRZAxis, FRXAxis, -FRXAxis, FRYAxis, -FRYAxis};
    setup.Frame().SetDirection(kAxes[random_.Below(DWORD(std::size(kAxes)))]);
    const double x = random_.Tenths(0, 200) * kMm;
    setup.Frame().SetReferencePosition({x, random_.Tenths(0, 150) * kMm, 0});
    setup.Frame().SetAngle(random_.Below(4) * PI_2);
    setup.Frame().SetClearance(25 * kMm);
    if (random_.OneIn(20)) setup.SetState(SUPPRESSED);
    for (DWORD i = 0; i < kFeaturesInASetup && left_ > 0; ++i) MakeFeature(setup);
  }

  void MakeFeature(HostNode& setup) {
    const FeatureKind& kind = kFeatureKinds[random_.Below(DWORD(std::size(kFeatureKinds)))];
    auto& feature = Add<HostFeature>(&setup, Numbered(kind.name, ++features_));
    const double x = random_.Tenths(0, 300);
    const double y = random_.Tenths(0, 200);
    std::vector<HostFeature::Point> points;
    for (DWORD i = 0; i < kind.corners; ++i) {
      const double dx = i * 4 < kind.corners * 2 ? i * 10.0 : (kind.corners - 1 - i) * 10.0;  // out and back
      const double dy = i * 2 < kind.corners ? 0 : 15;
      points.push_back({(x + dx) * kMm, (y + dy) * kMm});
    }
    feature.SetProfile(points);
    feature.SetDepth(random_.Tenths(1, 40) * kMm);
    if (random_.OneIn(25)) feature.SetState(SUPPRESSED);
    if (random_.OneIn(40)) feature.LockThis();
    if (random_.OneIn(10)) feature.SetDisplayColor(random_.Below(0x1000000));
    for (const auto& [name, tool] : kind.steps) {
      if (!name || left_ == 0) break;
      if (kind.corners == 1) {
        auto& drilling = Add<HostDrilling>(&feature, Numbered(name, ++operations_));
        drilling.SetPeck(random_.Below(4) * kMm);
        Finish(drilling, tool);
      } else {
        Finish(Add<HostOperation>(&feature, Numbered(name, ++operations_)), tool);
      }
    }
    if (random_.OneIn(60)) feature.Recycle();
  }

  void Finish(HostOperation& operation, ToolKind kind) {
    const auto& tools = tools_[std::size_t(kind)];  // none of that kind in a small document
    if (!tools.empty()) operation.SetTool(tools[random_.Below(DWORD(tools.size()))]);
    const double feed = random_.Tenths(200, 1200) * kMm;
    const double speed = 1000 + 50 * random_.Below(200);
    operation.SetCutting(feed, speed, random_.Tenths(1, 6) * kMm);
    if (random_.OneIn(25)) operation.SetState(SUPPRESSED);
    if (random_.OneIn(30)) operation.LockThis();
    if (random_.OneIn(35)) operation.Recycle();
    if (random_.OneIn(15)) {
      operation.GetFlag()->SetFlag();
      operation.GetFlag()->SetFlagErrorType(FLAGGED_ERROR_STOCK);
    }
  }

  HostDocument& document_;
  DWORD left_;
  Random random_;
  CString creator_;
  CString created_;
  DWORD setups_ = 0;
  DWORD features_ = 0;
  DWORD operations_ = 0;
  std::array<std::vector<HostTool*>, kToolKinds> tools_;
};

}  // namespace

void FillWithSample(HostDocument& document, DWORD nodes, ULONGLONG seed) { Sample(document, nodes, seed).Fill(); }

}  // namespace kestrova
