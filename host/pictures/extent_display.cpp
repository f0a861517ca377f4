// A back end that draws nothing and collects the extent of what it would draw.
#include "host/pictures/picture.h"

namespace kestrova {
namespace {

class ExtentDisplay : public QFBaseDisplay {
 public:
  explicit ExtentDisplay(Extent& extent) : extent_(extent) {}

  void DrawLine(const FRPosition& from, const FRPosition& to) override {
    extent_.Add(from);
    extent_.Add(to);
  }
  void DrawArrow(const FRPosition& from, const FRPosition& to) override { ExtentDisplay::DrawLine(from, to); }
  void DrawEllipse(const FRPosition& centre, double, double, const FRTransf&) override { extent_.Add(centre); }
  void DrawPlaneEllipse(const FRPosition& centre, double, double) override { extent_.Add(centre); }
  void DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>&) override { AddAll(points); }
  void DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>&) override { AddAll(points); }
  using QFBaseDisplay::DrawPolyline;
  void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) override {
    if (!points) return;
    for (const FRPosition& point : *points) extent_.Add(transforms.Apply(point / scale));
  }
  void DrawPolyline(const std::vector<FRPosition>& points, unsigned) override {
    for (const FRPosition& point : points) extent_.Add(point);
  }
  void DrawPolyline(const CList<FRPosition>& points, unsigned) override { AddAll(points); }
  void DrawPolyline(const CList<FRPosition>& points) override { AddAll(points); }
  void DrawText(const FRPosition& position, const CString&) override { extent_.Add(position); }

 private:
  void AddAll(const CList<FRPosition>& points) {
    for (POSITION at = points.GetHeadPosition(); at;) extent_.Add(points.GetNext(at));
  }

  Extent& extent_;
};

}  // namespace

Extent ExtentOf(Picture& picture, const PictureStyle& style, const ViewAxes& axes) {
  Extent extent(axes);
  QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, FRTransf());
  display.SetDisplay(new ExtentDisplay(extent));
  picture.Draw(display, style);
  return extent;
}

}  // namespace kestrova
