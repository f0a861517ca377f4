#include "host/pictures/toolpath_picture.h"

#include <fmt/format.h>

#include <vector>

#include "host/document/operation_node.h"
#include "host/document/setup_node.h"
#include "host/jobs/toolpath.h"
#include "host/shell/failure.h"
#include "host/shell/progress_bar.h"
#include "share/core/document_callbacks.h"
#include "share/settings/feed_colors.h"

namespace kestrova {
namespace {

using Point = HostFeature::Point;

constexpr ULONGLONG kMostPositions = 10'000'000;  // of one picture
constexpr double kClearance = 0.005;              // metres, if the setup has none
constexpr DWORD kBlack = 0;
constexpr DWORD kRapidColor = 0x0000C0;  // 0x00BBGGRR: red

// In the frame of a setup the Z axis points into the part.
class ToolpathDrawing {
 public:
  ToolpathDrawing(const HostDocument& document, QFDisplayInfo& display)
      : metresOfUnit_(document.Units().metres), display_(display) {
    colors_.RestoreValuesFromRegistry();
  }

  void Draw(const HostOperation& operation) {
    EnterSetupOf(operation);
    const double feed = operation.Feed() / metresOfUnit_;
    const unsigned long color = colors_.GetColorForFeed(feed);
    feedColor_ = color == kNoFeedColor ? kBlack : DWORD(color);
    started_ = false;
    ToolpathTask task = ToolpathTaskOf(operation);
    task.coarse = true;
    ComputeToolpath(
        task, [](int, const char*) { return true; },
        [this](double depth, std::span<const Point> points) { DrawContour(depth, points); });
    if (started_) Rapid(last_, {last_.x(), last_.y(), -clearance_});
    ++picture_.operations;
  }

  const ToolpathPicture& Picture() const { return picture_; }

 private:
  void EnterSetupOf(const HostOperation& operation) {
    FRTransf toModel;
    clearance_ = kClearance;
    QFObject* at = operation.GetOwner();
    for (int up = 0; at && up < kMostOwners; ++up, at = at->GetOwner()) {
      auto* const setup = DYNAMIC_DOWNCAST(HostSetup, at);
      if (!setup) continue;
      toModel = setup->Frame().Transform().inverse();
      if (setup->Frame().Clearance() > 0) clearance_ = setup->Frame().Clearance();
      break;
    }
    display_.SetUseXYToModelTransf(1, toModel);
  }

  void Count(ULONGLONG positions) {
    picture_.positions += positions;
    if (picture_.positions <= kMostPositions) return;
    throw Failure(
        fmt::format("the toolpaths have more than {} positions; draw one operation with --node ID", kMostPositions));
  }

  void Rapid(const FRPosition& from, const FRPosition& to) {
    Count(2);
    display_.SetLineStyle(1);
    display_.SetColor(kRapidColor);
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

  static constexpr int kMostOwners = 64;

  const double metresOfUnit_;
  QFDisplayInfo& display_;
  QFMillFeedColorsSettings colors_;
  DWORD feedColor_ = kBlack;
  double clearance_ = kClearance;
  bool started_ = false;
  FRPosition last_;  // in the setup's frame
  ToolpathPicture picture_;
};

bool IsDrawn(HostOperation& operation) { return !operation.IsSuppressed() && !operation.IsRecycled(); }

}  // namespace

ToolpathPicture DrawToolpaths(const HostDocument& document, QFDisplayInfo& display, std::optional<unsigned> node) {
  ToolpathDrawing drawing(document, display);
  const ProgressBar bar("drawing toolpaths", document.NodeCount());
  DWORD done = 0;
  document.Walk([&](HostNode& each, int) {
    auto* const operation = DYNAMIC_DOWNCAST(HostOperation, &each);
    const bool wanted = operation && (node ? operation->GetObjectId() == *node : IsDrawn(*operation));
    if (wanted) drawing.Draw(*operation);
    QFProgressCallback(++done);
  });
  return drawing.Picture();
}

}  // namespace kestrova
