#include "host/pictures/recording_picture.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/shell/failure.h"
#include "host/shell/whole_file.h"
#include "share/display/recording_reader.h"

namespace kestrova {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 30;

bool AreInside(const std::vector<FRPosition>& points) { return std::ranges::all_of(points, Extent::IsInside); }

template <class Value>
struct ListOf : CList<Value> {
  explicit ListOf(const std::vector<Value>& values) {
    for (const Value& value : values) this->AddTail(value);
  }
};

// Draws one item; false if it is left out.
bool DrawItem(QFDisplayInfo& display, const QFToolpathDisplayItem& item) {
  if (const auto* const line = dynamic_cast<const QFToolpathDisplayLine*>(&item)) {
    return Extent::IsInside(line->m_StartPos) && Extent::IsInside(line->m_EndPos) &&
           display.DrawLine(line->m_StartPos, line->m_EndPos);
  }
  if (const auto* const polyline = dynamic_cast<const QFToolpathDisplayPolyline*>(&item)) {
    ListOf<FRPosition> points(polyline->m_PtList);
    return AreInside(polyline->m_PtList) && display.DrawPolyline(points);
  }
  if (const auto* const ellipse = dynamic_cast<const QFToolpathDisplayEllipse*>(&item)) {
    return Extent::IsInside(ellipse->m_stPos) &&
           display.DrawEllipse(ellipse->m_stPos, ellipse->m_nPixelHorizontal, ellipse->m_nPixelVertical);
  }
  const auto shape = [&](const auto& filled, auto draw) {
    ListOf<FRPosition> points(filled.m_PtList);
    ListOf<FRUnitVector> normals(filled.m_PtNormalList);
    return AreInside(filled.m_PtList) && (display.*draw)(points, normals);
  };
  if (const auto* const polygon = dynamic_cast<const QFToolpathDisplayPolygon*>(&item))
    return shape(*polygon, &QFDisplayInfo::DrawPolygon);
  if (const auto* const triangle = dynamic_cast<const QFToolpathDisplayTriangle*>(&item))
    return shape(*triangle, &QFDisplayInfo::DrawTriangle);
  return false;
}

void SetState(QFDisplayInfo& display, const QFToolpathDisplayItem& item, int scale) {
  display.SetColor(item.m_Color);
  display.SetLineWidthWithInit(std::clamp(item.m_nLineWidth, 1, 64) * scale);
  display.SetLineStyle(item.m_bDashed);
  const auto* const fill = dynamic_cast<const QFToolpathDisplayFillItem*>(&item);
  display.SetTransparent(fill && fill->m_bTransparent);
  if (!fill) return;
  display.SetIsFill(fill->m_bFill);
  display.SetFillColor(fill->m_ColorFill);
}

}  // namespace

QFToolpathDisplayItems RecordingPicture::ReadItems(const std::string& file) {
  const std::string bytes = ReadWholeFile(file, kMostBytes);
  if (bytes.size() > kMostBytes)
    throw Failure(fmt::format("{} is larger than the {} bytes that a picture can be made of", file, kMostBytes),
                  {.file = file});
  QFToolpathDisplayItems items;
  DisplayRecordingFailure failure;
  if (ReadDisplayRecording(bytes, items, failure)) return items;
  throw Failure(fmt::format("{} is no recording of kestrova picture: byte {}: {}", file, failure.byte, failure.reason),
                {.file = file});
}

void RecordingPicture::Draw(QFDisplayInfo& display, const PictureStyle& style) {
  left_out_ = 0;
  for (const auto& item : items_) {
    SetState(display, *item, style.scale);
    if (!DrawItem(display, *item)) ++left_out_;
  }
  display.SetTransparent(0);
  display.SetLineStyle(0);
}

}  // namespace kestrova
