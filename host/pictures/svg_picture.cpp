#include "host/pictures/svg_picture.h"

#include <fmt/format.h>

#include <cmath>

#include "host/pictures/depth_order.h"
#include "host/pictures/light.h"
#include "host/shell/failure.h"
#include "platform/opengl.h"
#include "share/display/camera.h"
#include "share/display/file_display.h"

namespace kestrova {
namespace {

constexpr int kParts = 16;             // of a pixel: a QFCamera counts in whole numbers
constexpr double kLinesNearer = 2e-3;  // how far lines lie before their surfaces, as a part of the picture's size

// Records what the display of a recording leaves out too: arrows as lines, the other forms of polylines, and ellipses.
class AllItems : public QFFileDisplay {
 public:
  explicit AllItems(const ViewAxes& axes) : axes_(axes) {}

  using QFFileDisplay::DrawEllipse;
  using QFFileDisplay::DrawPlaneEllipse;
  using QFFileDisplay::DrawPolyline;
  // The head is flat and faces the viewer.
  void DrawArrow(const FRPosition& from, const FRPosition& to) override {
    DrawLine(from, to);
    const FRVector way = to - from;
    const FRUnitVector across = normalise(way * axes_.back);
    const auto tip = [&](double side) {
      const double width = side * way.len() / 6;
      return to + FRVector(across.x() * width, across.y() * width, across.z() * width);
    };
    DrawPolyline({tip(1), to + FRVector(way.x() / 3, way.y() / 3, way.z() / 3), tip(-1), tip(1)}, GL_LINE_STRIP);
  }
  void DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf&) override {
    QFFileDisplay::DrawEllipse(centre, int(std::lround(a)), int(std::lround(b)));
  }
  void DrawPlaneEllipse(const FRPosition& centre, double a, double b) override {
    QFFileDisplay::DrawEllipse(centre, int(std::lround(a)), int(std::lround(b)));
  }
  void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) override {
    CList<FRPosition> moved;
    if (points)
      for (const FRPosition& point : *points) moved.AddTail(transforms.Apply(point / scale));
    QFFileDisplay::DrawPolyline(moved);
  }
  void DrawPolyline(const std::vector<FRPosition>& points, unsigned mode) override {
    const bool pairs = mode == GL_LINES;
    CList<FRPosition> line;
    for (const FRPosition& point : points) {
      line.AddTail(point);
      if (!pairs || line.GetCount() < 2) continue;
      QFFileDisplay::DrawPolyline(line);
      line.RemoveAll();
    }
    if (mode == GL_LINE_LOOP && !points.empty()) line.AddTail(points.front());
    QFFileDisplay::DrawPolyline(line);
  }
  void DrawPolyline(const CList<FRPosition>& points, unsigned mode) override {
    std::vector<FRPosition> all;
    for (POSITION at = points.GetHeadPosition(); at;) all.push_back(points.GetNext(at));
    AllItems::DrawPolyline(all, mode);
  }

 private:
  const ViewAxes& axes_;
};

QFToolpathDisplayItems ItemsOf(Picture& picture, const PictureStyle& style, const ViewAxes& axes, bool onTop) {
  QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, FRTransf());
  auto* const items = new AllItems(axes);
  display.SetDisplay(items);
  onTop ? picture.DrawOnTop(display, style) : picture.Draw(display, style);
  return items->GetItems();
}

std::string ColorText(DWORD color, double brightness = 1) {
  const auto channel = [&](int shift) { return int(std::lround((color >> shift & 0xFF) * brightness)); };
  return fmt::format("#{:02x}{:02x}{:02x}", channel(0), channel(8), channel(16));
}

std::string Escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '<')
      out += "&lt;";
    else if (c == '&')
      out += "&amp;";
    else if (static_cast<unsigned char>(c) >= ' ')
      out += c;
  }
  return out;
}

std::string StrokeOf(const QFToolpathDisplayItem& item) {
  return fmt::format("stroke=\"{}\" stroke-width=\"{}\"{}", ColorText(item.m_Color), item.m_nLineWidth,
                     item.m_bDashed ? " stroke-dasharray=\"6 4\"" : "");
}

class SvgWriter {
 public:
  SvgWriter(const ViewOptions& view, const PictureStyle& style) : view_(view), style_(style) {
    out_ = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" viewBox=\"0 0 {0} {1}\">\n"
        "<rect width=\"{0}\" height=\"{1}\" fill=\"{2}\"/>\n",
        view.width, view.height, ColorText(style.colors.background));
  }

  // What is drawn from here on until the next call is projected by the camera.
  void SetCamera(const Camera& camera, int height) {
    camera_ = camera;
    const CRect pixels(0, 0, view_.width * kParts, height * kParts);
    const FRPosition target = camera.eye + -FRVector(camera.axes.back);
    const auto angle = [](double tangent) { return 2 * std::atan(tangent); };
    if (!projection_.SetCameraDetails(camera.eye, target, camera.axes.up, angle(camera.half_width),
                                      angle(camera.half_height), /*viewDistance=*/1, camera.near_plane,
                                      camera.far_plane, camera.perspective ? QFeCameraPerspective : QFeCameraParallel,
                                      pixels, FRTransf()))
      throw Failure("the view is too near or too far for an SVG file; move --eye");
  }

  void Line(const FRPosition& from, const FRPosition& to, const std::string& stroke) {
    POINT a, b;
    if (!projection_.GetScreenCoordinateLine(from, to, /*clip=*/1, a, b)) return;
    if (stroke != stroke_) {
      EndPath();
      stroke_ = stroke;
    }
    if (path_.empty() || a.x != end_.x || a.y != end_.y) path_ += fmt::format("M{} ", Text(a));
    path_ += Text(b) + ' ';
    end_ = b;
  }
  void EndPath() {
    if (!path_.empty()) {
      path_.pop_back();
      out_ += fmt::format("<path fill=\"none\" {} d=\"{}\"/>\n", stroke_, path_);
    }
    path_.clear();
    stroke_.clear();
  }
  void Area(const std::vector<FRPosition>& points, const std::string& attributes) {
    std::string corners;
    for (const FRPosition& point : points) {
      POINT pixel;
      if (projection_.GetScreenCoordinatePoint(point, pixel) == 0 &&
          (camera_.Depth(point) < camera_.near_plane || camera_.Depth(point) > camera_.far_plane))
        return;
      corners += Text(pixel) + ' ';
    }
    if (corners.empty()) return;
    corners.pop_back();
    EndPath();
    out_ += fmt::format("<polygon points=\"{}\" {}/>\n", corners, attributes);
  }
  void Ellipse(const FRPosition& centre, int a, int b, const std::string& attributes) {
    POINT pixel;
    if (!projection_.GetScreenCoordinatePoint(centre, pixel)) return;
    EndPath();
    out_ += fmt::format("<ellipse cx=\"{:g}\" cy=\"{:g}\" rx=\"{}\" ry=\"{}\" {}/>\n", double(pixel.x) / kParts,
                        double(pixel.y) / kParts, std::abs(a), std::abs(b), attributes);
  }
  void Words(const FRPosition& at, const std::string& text, const std::string& fill) {
    POINT pixel;
    if (!projection_.GetScreenCoordinatePoint(at, pixel)) return;
    EndPath();
    Words(double(pixel.x) / kParts, double(pixel.y) / kParts, text, fill);
  }
  void Words(double x, double y, const std::string& text, const std::string& fill) {
    out_ += fmt::format(
        "<text x=\"{:g}\" y=\"{:g}\" font-family=\"DejaVu Sans, sans-serif\" font-size=\"{}\" "
        "fill=\"{}\" stroke=\"{}\" stroke-width=\"3\" paint-order=\"stroke\">{}</text>\n",
        x, y, kTextHeight, fill, ColorText(style_.colors.background), Escaped(text));
  }
  void Raw(const std::string& text) { out_ += text; }
  std::string Finish() {
    EndPath();
    return std::move(out_) + "</svg>\n";
  }

 private:
  static std::string Text(const POINT& pixel) {
    return fmt::format("{:g} {:g}", double(pixel.x) / kParts, double(pixel.y) / kParts);
  }

  const ViewOptions& view_;
  const PictureStyle& style_;
  Camera camera_;
  QFCamera projection_;
  std::string out_, path_, stroke_;
  POINT end_ = {};
};

// The corners of an item with an area; null for other items.
const std::vector<FRPosition>* CornersOf(const QFToolpathDisplayItem& item) {
  if (const auto* const triangle = dynamic_cast<const QFToolpathDisplayTriangle*>(&item)) return &triangle->m_PtList;
  if (const auto* const polygon = dynamic_cast<const QFToolpathDisplayPolygon*>(&item)) return &polygon->m_PtList;
  return nullptr;
}

std::string AreaAttributes(const QFToolpathDisplayFillItem& item, const ViewAxes& axes) {
  double brightness = 1;
  if (const auto* const triangle = dynamic_cast<const QFToolpathDisplayTriangle*>(&item)) {
    FRVector sum;
    for (const FRUnitVector& normal : triangle->m_PtNormalList)
      sum = {sum.x() + normal.x(), sum.y() + normal.y(), sum.z() + normal.z()};
    if (sum.len() > RESNOR) brightness = Brightness(normalise(sum), axes);
  }
  const std::string opacity = item.m_bTransparent ? " opacity=\"0.5\"" : "";
  if (!item.m_bFill) return fmt::format("fill=\"none\" {}{}", StrokeOf(item), opacity);
  const std::string fill = ColorText(item.m_ColorFill, brightness);
  // Smooth sides would leave gaps between neighbours. A thin stroke closes them, except over a transparent one.
  if (item.m_bTransparent) return fmt::format("fill=\"{}\"{} shape-rendering=\"crispEdges\"", fill, opacity);
  if (item.m_Color != item.m_ColorFill) return fmt::format("fill=\"{}\" {}", fill, StrokeOf(item));
  return fmt::format("fill=\"{0}\" stroke=\"{0}\" stroke-width=\"0.6\" stroke-linejoin=\"round\"", fill);
}

void WriteItem(const QFToolpathDisplayItem& item, const ViewAxes& axes, SvgWriter& svg) {
  if (const auto* const line = dynamic_cast<const QFToolpathDisplayLine*>(&item)) {
    svg.Line(line->m_StartPos, line->m_EndPos, StrokeOf(item));
  } else if (const auto* const polyline = dynamic_cast<const QFToolpathDisplayPolyline*>(&item)) {
    const std::string stroke = StrokeOf(item);
    for (std::size_t i = 1; i < polyline->m_PtList.size(); ++i)
      svg.Line(polyline->m_PtList[i - 1], polyline->m_PtList[i], stroke);
  } else if (const auto* const ellipse = dynamic_cast<const QFToolpathDisplayEllipse*>(&item)) {
    svg.Ellipse(ellipse->m_stPos, ellipse->m_nPixelHorizontal, ellipse->m_nPixelVertical,
                AreaAttributes(*ellipse, axes));
  } else if (const auto* const text = dynamic_cast<const QFToolpathDisplayText*>(&item)) {
    svg.Words(text->m_StartPos, ToUtf8(text->m_Text), ColorText(item.m_Color));
  } else if (const std::vector<FRPosition>* const corners = CornersOf(item)) {
    svg.Area(*corners, AreaAttributes(static_cast<const QFToolpathDisplayFillItem&>(item), axes));
  }
}

// The pieces of an item for hiding; none of an item that is always in front.
void AddPieces(const QFToolpathDisplayItem& item, std::size_t number, const FRVector& nearer,
               std::vector<DepthPiece>& pieces) {
  const auto add_line = [&](const FRPosition& from, const FRPosition& to) {
    pieces.push_back({{from + nearer, to + nearer}, number});
  };
  if (const std::vector<FRPosition>* const corners = CornersOf(item)) {
    pieces.push_back({*corners, number});
  } else if (const auto* const line = dynamic_cast<const QFToolpathDisplayLine*>(&item)) {
    add_line(line->m_StartPos, line->m_EndPos);
  } else if (const auto* const polyline = dynamic_cast<const QFToolpathDisplayPolyline*>(&item)) {
    for (std::size_t i = 1; i < polyline->m_PtList.size(); ++i)
      add_line(polyline->m_PtList[i - 1], polyline->m_PtList[i]);
  }
}

bool IsShaded(const QFToolpathDisplayItem& item) {
  const auto* const triangle = dynamic_cast<const QFToolpathDisplayTriangle*>(&item);
  return triangle && !triangle->m_PtNormalList.empty();
}

// With a shaded surface, everything is drawn from the farthest to the nearest.
void WriteItems(const QFToolpathDisplayItems& items, const Camera& camera, double size, SvgWriter& svg) {
  const bool shaded = std::ranges::any_of(items, [](const auto& item) { return IsShaded(*item); });
  if (!shaded) {
    for (const auto& item : items) WriteItem(*item, camera.axes, svg);
    return svg.EndPath();
  }
  const FRUnitVector& back = camera.axes.back;
  const double step = size * kLinesNearer;
  const FRVector nearer(back.x() * step, back.y() * step, back.z() * step);
  std::vector<DepthPiece> pieces;
  for (std::size_t i = 0; i < items.size(); ++i) AddPieces(*items[i], i, nearer, pieces);
  for (const DepthPiece& piece : DepthOrder(std::move(pieces), camera)) {
    const QFToolpathDisplayItem& item = *items[piece.item];
    if (piece.points.size() == 2) {
      svg.Line(piece.points[0], piece.points[1], StrokeOf(item));
    } else {
      svg.Area(piece.points, AreaAttributes(static_cast<const QFToolpathDisplayFillItem&>(item), camera.axes));
    }
  }
  svg.EndPath();
  for (const auto& item : items)
    if (item->m_nType == QFeDisplayEllipse || item->m_nType == QFeDisplayText) WriteItem(*item, camera.axes, svg);
}

void WriteMarks(const PictureLayout& layout, const PictureStyle& style, SvgWriter& svg) {
  const auto color = [&](const PlacedMark& mark) {
    return ColorText(mark.mark->color ? mark.mark->color : style.colors.lines);
  };
  for (const PlacedMark& mark : layout.marks) {
    if (mark.mark->has_point)
      svg.Raw(fmt::format("<circle cx=\"{:g}\" cy=\"{:g}\" r=\"3.5\" fill=\"{}\" stroke=\"{}\"/>\n", mark.x, mark.y,
                          color(mark), ColorText(style.colors.background)));
    if (mark.has_leader)
      svg.Raw(fmt::format("<path stroke=\"{}\" d=\"M{:g} {:g} {:g} {:g}\"/>\n", color(mark), mark.x, mark.y,
                          mark.LeaderEnd(), mark.middle));
  }
  for (const PlacedMark& mark : layout.marks)
    svg.Words(mark.left, mark.middle + kTextHeight * 0.36, mark.mark->name, color(mark));
}

void WriteLegend(const PictureLayout& layout, const PictureStyle& style, SvgWriter& svg) {
  for (const PlacedRow& row : layout.rows) {
    const std::string color = ColorText(row.row->color);
    if (row.row->sample == LegendRow::Sample::kArea) {
      svg.Raw(fmt::format("<rect x=\"{:g}\" y=\"{:g}\" width=\"{}\" height=\"14\" fill=\"{}\"/>\n", row.left,
                          row.middle - 7, kSampleWidth, color));
    } else if (row.row->sample == LegendRow::Sample::kPoint) {
      svg.Raw(fmt::format("<circle cx=\"{:g}\" cy=\"{:g}\" r=\"{}\" fill=\"{}\"/>\n", row.left + kSampleWidth / 2.0,
                          row.middle, kSamplePoint / 2, color));
    } else if (row.row->sample == LegendRow::Sample::kText) {
      svg.Words(row.left, row.middle + kTextHeight * 0.36, row.row->sample_text, color);
    } else {
      svg.Raw(fmt::format("<path stroke=\"{}\" stroke-width=\"2\"{} d=\"M{:g} {:g}h{}\"/>\n", color,
                          row.row->sample == LegendRow::Sample::kDashes ? " stroke-dasharray=\"6 4\"" : "", row.left,
                          row.middle, kSampleWidth));
    }
    svg.Words(row.TextLeft(), row.middle + kTextHeight * 0.36, row.row->text, ColorText(style.colors.lines));
  }
}

}  // namespace

std::string SvgOf(Picture& picture, const ViewOptions& view) {
  const PictureStyle style = {view.dark ? kOnDark : kOnWhite};
  const std::optional<PlacedPicture> placed = PlaceAll(picture, style, view);
  if (!placed) return {};
  const Camera& camera = placed->camera;
  SvgWriter svg(view, style);
  svg.SetCamera(camera, placed->layout.drawing_height);
  WriteItems(ItemsOf(picture, style, camera.axes, /*onTop=*/false), camera, placed->size, svg);
  WriteItems(ItemsOf(picture, style, camera.axes, /*onTop=*/true), camera, placed->size, svg);
  WriteMarks(placed->layout, style, svg);
  WriteLegend(placed->layout, style, svg);
  return svg.Finish();
}

}  // namespace kestrova
