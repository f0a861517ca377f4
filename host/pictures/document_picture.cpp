#include "host/pictures/document_picture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "companions/geometry/constants.h"
#include "host/document/operation_node.h"
#include "host/document/pattern_report.h"
#include "host/document/setup_node.h"
#include "host/document/tool_node.h"
#include "host/shell/failure.h"
#include "host/shell/progress_bar.h"
#include "share/core/document_callbacks.h"
#include "share/patterns/pattern_info.h"
#include "share/patterns/pattern_orders.h"

namespace kestrova {
namespace {

constexpr ULONGLONG kMostInstances = 10'000;  // of one picture: OpenGL needs 80 KB for a marker's 800 triangles
constexpr std::size_t kMostMarks = 400;       // more texts would cover the picture
constexpr double kHoleRadius = 0.005;         // metres, of a hole without a tool
constexpr int kCircleSteps = 48;

FRTransf ToModel(const QFObject& node) {
  HostSetup* const setup = SetupOf(node);
  return setup ? setup->Frame().Transform().inverse() : FRTransf();
}

// The largest tool of the feature's operations determines the size of a hole.
double HoleRadius(const HostDocument& document, const HostFeature& hole) {
  double diameter = 0;
  for (HostNode* child = document.FirstChild(&hole); child; child = document.NextSibling(*child)) {
    const auto* const operation = DYNAMIC_DOWNCAST(HostOperation, child);
    if (operation && operation->Tool()) diameter = std::max(diameter, operation->Tool()->Diameter());
  }
  return diameter > 0 ? diameter / 2 : kHoleRadius;
}

// The corners of the profile, or of a circle for a hole.
std::vector<HostFeature::Point> Corners(const HostDocument& document, const HostFeature& feature) {
  const std::span<const HostFeature::Point> profile = feature.Profile();
  if (profile.size() != 1) return {profile.begin(), profile.end()};
  const double radius = HoleRadius(document, feature);
  std::vector<HostFeature::Point> circle;
  for (int i = 0; i < kCircleSteps; ++i) {
    const double angle = 2 * PI * i / kCircleSteps;
    circle.push_back({profile[0].x + radius * std::cos(angle), profile[0].y + radius * std::sin(angle)});
  }
  return circle;
}

}  // namespace

// In the frame of a setup the Z axis points into the part.
class DocumentPicture::Drawing {
 public:
  Drawing(QFDisplayInfo& display, const HostDocument& document, const PictureColors& colors)
      : display_(display), document_(document), colors_(colors) {}
  ~Drawing() { display_.SetUseXYToModelTransf(0, FRTransf()); }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  // The feature, or all instances of its pattern, with their markers.
  void Draw(HostFeature& feature, QFPatternInfo* pattern) {
    Enter(feature);
    display_.SetColor(colors_.lines);
    if (!pattern) return Outline(FRTransf());
    EachInstance(*pattern, [&](LONGLONG, const FRTransf& transform, bool active) {
      display_.SetLineStyle(!active);
      Outline(transform);
    });
    display_.SetLineStyle(0);
    display_.SetIsFill(1);
    display_.SetFillColor(colors_.background);  // of markers that are not shaded
    display_.InitialiseGraphics();              // takes over the fill colour
    pattern->Display(&display_);
    display_.SetIsFill(0);
  }
  // In one colour and wide, over what is drawn.
  void DrawHighlighted(HostFeature& feature, QFPatternInfo* pattern) {
    Enter(feature);
    const int width = display_.GetLineWidth();
    display_.SetColor(kHighlightColor);
    display_.SetLineWidthWithInit(width * kHighlightWidth);
    if (!pattern) Outline(FRTransf());
    if (pattern) {
      EachInstance(*pattern, [&](LONGLONG instance, const FRTransf& transform, bool) {
        Outline(transform);
        pattern->HighLight(int(instance), &display_);
      });
    }
    display_.SetLineWidthWithInit(width);
  }

 private:
  void Enter(const HostFeature& feature) {
    display_.SetUseXYToModelTransf(1, ToModel(feature));
    corners_ = Corners(document_, feature);
    is_round_ = feature.Profile().size() == 1;
    depth_ = feature.Depth();
  }

  template <class Each>
  void EachInstance(QFPatternInfo& pattern, Each each) {
    const LONGLONG count = pattern.GetNumPatternInstances();
    instances_ += ULONGLONG(count);
    if (instances_ > kMostInstances)
      throw Failure(fmt::format(
          "a picture shows at most {} instances of patterns; --node ID draws those of one feature", kMostInstances));
    for (LONGLONG instance = 0; instance < count; ++instance) {
      FRTransf transform;
      const QFeObjectPatternInstanceStatus status = pattern.GetTransfForInst(instance, transform);
      each(instance, transform, status == ePatternInstanceActive);
    }
  }

  // The profile and the one at the depth, and the edges between them; two of a hole's. Nothing if a position is so far
  // out that no picture can show it.
  void Outline(const FRTransf& transform) {
    positions_ += 2 * corners_.size();
    if (positions_ > kMostPositions)
      throw Failure(fmt::format("the features have more than {} positions; draw one with --node ID", kMostPositions));
    std::vector<FRPosition> top, bottom;
    for (const HostFeature::Point& corner : corners_) {
      top.push_back(FRPosition(corner.x, corner.y, 0) * transform);
      bottom.push_back(FRPosition(corner.x, corner.y, depth_) * transform);
    }
    const auto is_inside = [](const FRPosition& position) { return Extent::IsInside(position); };
    if (!std::ranges::all_of(top, is_inside) || !std::ranges::all_of(bottom, is_inside)) return;
    DrawProfile(top);
    if (depth_ == 0) return;
    DrawProfile(bottom);
    for (std::size_t i = 0; i < top.size(); i += is_round_ ? top.size() / 2 : 1) display_.DrawLine(top[i], bottom[i]);
  }
  void DrawProfile(const std::vector<FRPosition>& corners) {
    if (corners.empty()) return;
    CList<FRPosition> points;
    for (const FRPosition& corner : corners) points.AddTail(corner);
    if (corners.size() > 2) points.AddTail(corners.front());
    display_.DrawPolyline(points);
  }

  QFDisplayInfo& display_;
  const HostDocument& document_;
  const PictureColors colors_;
  std::vector<HostFeature::Point> corners_;
  bool is_round_ = false;
  double depth_ = 0;
  ULONGLONG positions_ = 0, instances_ = 0;
};

bool DocumentPicture::HasFeature(unsigned id) const {
  bool found = false;
  document_.Walk([&](HostNode& each, int) {
    found = found || (DYNAMIC_DOWNCAST(HostFeature, &each) && each.GetObjectId() == id);
  });
  return found;
}

bool DocumentPicture::IsDrawn(HostFeature& feature) const {
  if (choice_.patterned && !PatternOf(feature)) return false;
  if (!choice_.node) return !feature.IsSuppressed() && !feature.IsRecycled();
  bool chosen = feature.GetObjectId() == *choice_.node;
  for (HostNode* child = document_.FirstChild(&feature); child; child = document_.NextSibling(*child))
    chosen = chosen || child->GetObjectId() == *choice_.node;
  return chosen;
}

Standing DocumentPicture::Stands() const {
  HostSetup* setup = nullptr;
  bool same = true;
  document_.Walk([&](HostNode& each, int) {
    auto* const feature = DYNAMIC_DOWNCAST(HostFeature, &each);
    if (!feature || !IsDrawn(*feature)) return;
    HostSetup* const above = SetupOf(*feature);
    same = same && above && (!setup || setup == above);
    setup = above;
  });
  if (!setup || !same) return {};
  const FRTransf to_model = setup->Frame().Transform().inverse();
  return {-FRZAxis * to_model, FRYAxis * to_model};
}

void DocumentPicture::Draw(QFDisplayInfo& display, const PictureStyle& style) {
  colors_ = style.colors;
  marks_.clear();
  ordered_by_.clear();
  own_numbers_ = false;
  too_many_ = false;
  features_ = 0;
  patterns_ = 0;
  instances_ = 0;
  skipped_ = 0;
  HostFeature* highlighted = nullptr;
  Drawing drawing(display, document_, style.colors);
  const ProgressBar bar("drawing features", document_.NodeCount());
  DWORD done = 0;
  document_.Walk([&](HostNode& each, int) {
    QFProgressCallback(++done);
    auto* const feature = DYNAMIC_DOWNCAST(HostFeature, &each);
    if (!feature) return;
    if (choice_.highlight && feature->GetObjectId() == *choice_.highlight) highlighted = feature;
    if (!IsDrawn(*feature)) return;
    QFPatternInfo* const pattern = PatternOf(*feature);
    drawing.Draw(*feature, pattern);
    ++features_;
    const FRTransf to_model = ToModel(*feature);
    if (FRPosition at; feature->GetRefPointForPattern(at)) AddName(*feature, at * to_model);
    if (!pattern) return;
    ++patterns_;
    instances_ += ULONGLONG(pattern->GetNumPatternInstances());
    skipped_ += ULONGLONG(pattern->GetNumPatternInstances() - pattern->GetNumActivePatternInstances());
    AddNumbers(*pattern, to_model);
  });
  highlighted_ = highlighted != nullptr;
  if (highlighted) drawing.DrawHighlighted(*highlighted, PatternOf(*highlighted));
}

void DocumentPicture::AddName(HostNode& node, const FRPosition& at) {
  if (choice_.patterned || !Extent::IsInside(at)) return;
  too_many_ = marks_.size() >= kMostMarks;
  if (!too_many_) marks_.push_back({at, 0, ToUtf8(node.Name()), /*has_point=*/false});
}

// By the order of the chosen operation, or of the first one that has an order.
void DocumentPicture::AddNumbers(QFPatternInfo& pattern, const FRTransf& toModel) {
  if (!choice_.patterned || too_many_) return;
  const QFPattOptimizedList* order = nullptr;
  if (const QFPattOptimizMgr* const orders = pattern.GetPatternOptimMgr()) {
    for (QFObject* const operation : orders->GetAllIdentifiers()) {
      const bool chosen = operation && choice_.node && operation->GetObjectId() == *choice_.node;
      if (operation && (!order || chosen)) order = orders->FindOptimizedList(operation);
    }
  }
  if (order) ordered_by_.insert(order->GetObjectIdentifier()->GetObjectId());
  if (!order) own_numbers_ = true;
  const LONGLONG instances = pattern.GetNumPatternInstances();
  const LONGLONG count = order ? order->GetCount() : instances;
  for (LONGLONG i = 0; i < count; ++i) {
    const LONGLONG instance = order ? order->GetIndex(int(i)) : i;
    FRTransf transform;
    if (instance < 0 || instance >= instances) continue;
    too_many_ = marks_.size() >= kMostMarks;
    if (too_many_) return;
    pattern.GetTransfForInst(instance, transform);
    const FRPosition at = pattern.GetRefPosOfObject() * transform * toModel;
    if (Extent::IsInside(at)) marks_.push_back({at, 0, fmt::format("{}", i + (order ? 1 : 0)), /*has_point=*/false});
  }
}

std::vector<PictureMark> DocumentPicture::Marks() const { return too_many_ ? std::vector<PictureMark>() : marks_; }

std::vector<LegendRow> DocumentPicture::Legend() const {
  using Sample = LegendRow::Sample;
  std::vector<LegendRow> rows;
  const auto row = [&](ULONGLONG count, const char* what) {
    return fmt::format("{} {}instance{}", count, what, count == 1 ? "" : "s");
  };
  if (instances_ > skipped_)
    rows.push_back({Sample::kPoint, QFPatternInfo::kActiveColor, row(instances_ - skipped_, ""), {}});
  if (skipped_ > 0) rows.push_back({Sample::kPoint, QFPatternInfo::kOtherColor, row(skipped_, "skipped "), {}});
  if (!too_many_ && !ordered_by_.empty())
    rows.push_back({Sample::kText, colors_.lines,
                    ordered_by_.size() > 3 ? "order of the operation"
                                           : fmt::format("order of operation {}", fmt::join(ordered_by_, " and ")),
                    "1 2"});
  if (!too_many_ && own_numbers_) rows.push_back({Sample::kText, colors_.lines, "instance", "0 1"});
  if (highlighted_) rows.push_back({Sample::kLine, kHighlightColor, fmt::format("feature {}", *choice_.highlight), {}});
  return rows;
}

}  // namespace kestrova
