#include "host/pictures/flat_drawing.h"

#include <cmath>

#include "companions/geometry/constants.h"

namespace kestrova {
namespace {

constexpr double kMarkSize = 9;  // pixels
constexpr int kPointSides = 24;

DWORD ColorOf(const PlacedMark& mark, const PictureStyle& style) {
  return mark.mark->color ? mark.mark->color : style.colors.lines;
}

// Draws in pixels of the picture, from its top left corner.
class FlatDrawing {
 public:
  FlatDrawing(QFDisplayInfo& display, const PictureStyle& style, double textTop)
      : display_(display), style_(style), text_top_(textTop) {}

  void Line(double x, double y, double toX, double toY, DWORD color, int width) {
    display_.SetColor(color);
    display_.SetLineWidthWithInit(width * style_.scale);
    display_.DrawLine({x, y, 0}, {toX, toY, 0});
  }
  void Area(double left, double top, double right, double bottom, DWORD color) {
    SetFill(color);
    Triangle({left, top, 0}, {left, bottom, 0}, {right, bottom, 0});
    Triangle({left, top, 0}, {right, top, 0}, {right, bottom, 0});
  }
  // A disc. The points of OpenGL are squares with several samples a pixel.
  void Point(double x, double y, double diameter, DWORD color) {
    display_.SetLineWidthWithInit(1);  // of a device context's outlines
    SetFill(color);
    const auto side = [&](int i) {
      const double angle = 2 * PI * i / kPointSides;
      return FRPosition(x + diameter / 2 * std::cos(angle), y + diameter / 2 * std::sin(angle), 0);
    };
    for (int i = 0; i < kPointSides; ++i) Triangle({x, y, 0}, side(i), side(i + 1));
  }
  // The text in its colour on a border of the background's colour.
  void Text(double left, double middle, const std::string& utf8, DWORD color) {
    const CString text = FromUtf8(utf8);
    const double top = middle - kTextHeight * text_top_;
    display_.SetColor(style_.colors.background);
    for (int dx = -1; dx <= 1; ++dx)
      for (int dy = -1; dy <= 1; ++dy)
        if (dx || dy) display_.DrawText({left + dx, top + dy, 0}, text);
    display_.SetColor(color);
    display_.DrawText({left, top, 0}, text);
  }

 private:
  void Triangle(const FRPosition& a, const FRPosition& b, const FRPosition& c) {
    CList<FRPosition> points;
    CList<FRUnitVector> normals;
    for (const FRPosition& point : {a, b, c}) points.AddTail(point);
    display_.DrawTriangle(points, normals);
  }
  void SetFill(DWORD color) {
    display_.SetColor(color);
    display_.SetIsFill(1);
    display_.SetFillColor(color);
    display_.InitialiseGraphics();  // takes over the fill colour
  }

  QFDisplayInfo& display_;
  const PictureStyle& style_;
  const double text_top_;
};

}  // namespace

void DrawTextsOf(const PictureLayout& layout, const PictureStyle& style, double textTop, QFDisplayInfo& display) {
  display.SetFont(-kTextHeight * style.scale, /*weight=*/400, 0, 0, _T("DejaVu Sans"));
  display.InitialiseGraphics();
  FlatDrawing flat(display, style, textTop);
  for (const PlacedMark& mark : layout.marks) {
    const DWORD color = ColorOf(mark, style);
    if (mark.mark->has_point) {
      flat.Point(mark.x, mark.y, kMarkSize, style.colors.background);
      flat.Point(mark.x, mark.y, kMarkSize - 3, color);
    }
    if (mark.has_leader) flat.Line(mark.x, mark.y, mark.LeaderEnd(), mark.middle, color, 1);
  }
  for (const PlacedMark& mark : layout.marks) flat.Text(mark.left, mark.middle, mark.mark->name, ColorOf(mark, style));
  for (const PlacedRow& row : layout.rows) {
    const LegendRow& legend = *row.row;
    if (legend.sample == LegendRow::Sample::kArea) {
      flat.Area(row.left, row.middle - 7, row.left + kSampleWidth, row.middle + 7, legend.color);
    } else if (legend.sample == LegendRow::Sample::kPoint) {
      flat.Point(row.left + kSampleWidth / 2.0, row.middle, kSamplePoint, legend.color);
    } else if (legend.sample == LegendRow::Sample::kText) {
      flat.Text(row.left, row.middle, legend.sample_text, legend.color);
    } else {
      display.SetLineStyle(legend.sample == LegendRow::Sample::kDashes);
      flat.Line(row.left, row.middle, row.left + kSampleWidth, row.middle, legend.color, 2);
      display.SetLineStyle(0);
    }
    flat.Text(row.TextLeft(), row.middle, legend.text, style.colors.lines);
  }
  display.UninitialiseGraphics();
}

}  // namespace kestrova
