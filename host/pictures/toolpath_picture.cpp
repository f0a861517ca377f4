#include "host/pictures/toolpath_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "host/document/operation_node.h"
#include "host/document/setup_node.h"
#include "host/jobs/toolpath.h"
#include "host/shell/failure.h"
#include "host/shell/progress_bar.h"
#include "share/core/document_callbacks.h"

namespace kestrova {
namespace {

using Point = HostFeature::Point;

constexpr double kClearance = 0.005;  // metres, if the setup has none

// In the frame of a setup the Z axis points into the part.
class ToolpathDrawing {
 public:
  ToolpathDrawing(QFDisplayInfo& display, const PictureColors& colors) : display_(display), colors_(colors) {}

  void Draw(const HostOperation& operation, DWORD feedColor) {
    EnterSetupOf(operation);
    feedColor_ = feedColor;
    started_ = false;
    ToolpathTask task = ToolpathTaskOf(operation);
    task.coarse = true;
    ComputeToolpath(
        task, [](int, const char*) { return true; },
        [this](double depth, std::span<const Point> points) { DrawContour(depth, points); });
    if (started_) Rapid(last_, {last_.x(), last_.y(), -clearance_});
  }
  // In one colour and width, over what is drawn.
  void DrawHighlighted(const HostOperation& operation) {
    const int width = display_.GetLineWidth();
    display_.SetColor(kHighlightColor);
    display_.SetLineWidthWithInit(width * kHighlightWidth);
    display_.SetDynamicHiLite(1);
    Draw(operation, kHighlightColor);
    display_.SetDynamicHiLite(0);
    display_.SetLineWidthWithInit(width);
  }
  void Leave() { display_.SetUseXYToModelTransf(0, FRTransf()); }

  ULONGLONG Positions() const { return positions_; }

 private:
  void EnterSetupOf(const HostOperation& operation) {
    HostSetup* const setup = SetupOf(operation);
    clearance_ = setup && setup->Frame().Clearance() > 0 ? setup->Frame().Clearance() : kClearance;
    display_.SetUseXYToModelTransf(1, setup ? setup->Frame().Transform().inverse() : FRTransf());
  }

  void Count(ULONGLONG positions) {
    positions_ += positions;
    if (positions_ <= kMostPositions) return;
    throw Failure(
        fmt::format("the toolpaths have more than {} positions; draw one operation with --node ID", kMostPositions));
  }

  void Rapid(const FRPosition& from, const FRPosition& to) {
    Count(2);
    display_.SetLineStyle(1);
    display_.SetColor(colors_.rapid);
    display_.DrawLine(from, to);
    display_.SetLineStyle(0);
  }

  // Up to the clearance, across and down to the first point; the first contour of an operation only down.
  void Approach(const FRPosition& first) {
    const FRPosition above(first.x(), first.y(), -clearance_);
    if (started_) {
      const FRPosition lifted(last_.x(), last_.y(), -clearance_);
      Rapid(last_, lifted);
      Rapid(lifted, above);
    }
    Rapid(above, first);
    started_ = true;
  }

  void DrawContour(double depth, std::span<const Point> points) {
    if (points.empty()) return;
    Count(points.size());
    CList<FRPosition> positions;
    for (const Point& point : points) positions.AddTail(FRPosition(point.x, point.y, depth));
    Approach(positions.GetHead());
    last_ = positions.GetTail();
    display_.SetColor(feedColor_);
    display_.DrawPolyline(positions);
  }

  QFDisplayInfo& display_;
  const PictureColors colors_;
  DWORD feedColor_ = 0;
  double clearance_ = kClearance;
  bool started_ = false;
  FRPosition last_;  // in the setup's frame
  ULONGLONG positions_ = 0;
};

}  // namespace

ToolpathPicture::ToolpathPicture(const HostDocument& document, const ToolpathChoice& choice)
    : document_(document), choice_(choice) {
  table_.RestoreValuesFromRegistry();
}

bool ToolpathPicture::HasOperation(unsigned id) const {
  bool found = false;
  document_.Walk([&](HostNode& each, int) {
    auto* const operation = DYNAMIC_DOWNCAST(HostOperation, &each);
    found = found || (operation && operation->GetObjectId() == id);
  });
  return found;
}

void ToolpathPicture::Draw(QFDisplayInfo& display, const PictureStyle& style) {
  colors_ = style.colors;
  feeds_.clear();
  operations_ = 0;
  const HostOperation* highlighted = nullptr;
  ToolpathDrawing drawing(display, style.colors);
  const ProgressBar bar("drawing toolpaths", document_.NodeCount());
  DWORD done = 0;
  document_.Walk([&](HostNode& each, int) {
    auto* const operation = DYNAMIC_DOWNCAST(HostOperation, &each);
    if (operation && choice_.highlight && operation->GetObjectId() == *choice_.highlight) highlighted = operation;
    if (operation && (choice_.node ? operation->GetObjectId() == *choice_.node
                                   : !operation->IsSuppressed() && !operation->IsRecycled())) {
      const double feed = operation->Feed() / document_.Units().metres;
      const unsigned long stored = table_.GetColorForFeed(feed);
      const DWORD color = stored == kNoFeedColor ? style.colors.lines : DWORD(stored);
      drawing.Draw(*operation, color);
      Feeds& feeds = feeds_.try_emplace(color, Feeds{feed, feed}).first->second;
      feeds = {std::min(feeds.least, feed), std::max(feeds.most, feed)};
      ++operations_;
    }
    QFProgressCallback(++done);
  });
  highlighted_ = highlighted != nullptr;
  if (highlighted) drawing.DrawHighlighted(*highlighted);
  drawing.Leave();
  positions_ = drawing.Positions();
}

std::vector<LegendRow> ToolpathPicture::Legend() const {
  std::vector<LegendRow> rows;
  if (operations_ > 0) rows.push_back({LegendRow::Sample::kDashes, colors_.rapid, "rapid"});
  std::vector<std::pair<DWORD, Feeds>> feeds_upward(feeds_.begin(), feeds_.end());
  std::ranges::sort(feeds_upward, {}, [](const auto& each) { return each.second.least; });
  for (const auto& [color, feeds] : feeds_upward) {
    const std::string unit = fmt::format("{}/min", document_.Units().symbol);
    rows.push_back({LegendRow::Sample::kLine, color,
                    feeds.least < feeds.most ? fmt::format("feed {:.4g} to {:.4g} {}", feeds.least, feeds.most, unit)
                                             : fmt::format("feed {:.4g} {}", feeds.least, unit)});
  }
  if (highlighted_)
    rows.push_back({LegendRow::Sample::kLine, kHighlightColor, fmt::format("operation {}", *choice_.highlight)});
  return rows;
}

}  // namespace kestrova
