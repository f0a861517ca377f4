#include "host/pictures/flat_drawing.h"

namespace kestrova {
namespace {

constexpr double kMarkSize = 9;  // pixels

DWORD ColorOf(const PlacedMark& mark, const PictureStyle& style) {
  return mark.mark->color ? mark.mark->color : style.colors.lines;
}

// Draws in pixels of the picture, from its top left corner.
class FlatDrawing {
 public:
  FlatDrawing(QFDisplayInfo& display, const PictureStyle& style, const FlatDevice& device)
      : display_(display), style_(style), device_(device) {}

  void Line(double x, double y, double toX, double toY, DWORD color, int width) {
    display_.SetColor(color);
    display_.SetLineWidthWithInit(width * style_.scale);
    display_.DrawLine({x, y, 0}, {toX, toY, 0});
  }
  void Area(double left, double top, double right, double bottom, DWORD color) {
    SetFill(color);
    for (const FRPosition& corner : {FRPosition(left, bottom, 0), FRPosition(right, top, 0)}) {
      CList<FRPosition> points;
      CList<FRUnitVector> normals;
      points.AddTail(FRPosition(left, top, 0));
      points.AddTail(corner);
      points.AddTail(FRPosition(right, bottom, 0));
      display_.DrawTriangle(points, normals);
    }
  }
  void Point(double x, double y, double size, DWORD color) {
    SetFill(color);
    const double drawn = size * style_.scale * device_.point;
    display_.DrawPlaneEllipse({x, y, 0}, drawn, drawn);
  }
  // The text in its colour on a border of the background's colour.
  void Text(double left, double middle, const std::string& utf8, DWORD color) {
    const CString text = FromUtf8(utf8);
    const double top = middle - kTextHeight * device_.text_top;
    display_.SetColor(style_.colors.background);
    for (int dx = -1; dx <= 1; ++dx)
      for (int dy = -1; dy <= 1; ++dy)
        if (dx || dy) display_.DrawText({left + dx, top + dy, 0}, text);
    display_.SetColor(color);
    display_.DrawText({left, top, 0}, text);
  }

 private:
  void SetFill(DWORD color) {
    display_.SetColor(color);
    display_.SetIsFill(1);
    display_.SetFillColor(color);
    display_.InitialiseGraphics();  // takes over the fill colour
  }

  QFDisplayInfo& display_;
  const PictureStyle& style_;
  const FlatDevice device_;
};

}  // namespace

void DrawTextsOf(const PictureLayout& layout, const PictureStyle& style, const FlatDevice& device,
                 QFDisplayInfo& display) {
  display.SetFont(-kTextHeight * style.scale, /*weight=*/400, 0, 0, _T("DejaVu Sans"));
  display.InitialiseGraphics();
  FlatDrawing flat(display, style, device);
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
