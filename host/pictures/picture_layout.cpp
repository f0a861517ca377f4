#include "host/pictures/picture_layout.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace kestrova {
namespace {

constexpr double kCharacterWidth = 0.6 * kTextHeight;
constexpr int kRowHeight = 24, kStripMargin = 14, kColumnGap = 30;
constexpr double kMarkRadius = 7;  // of the space that a mark itself takes
constexpr double kGap = 3;         // between texts

struct Box {
  double left, top, right, bottom;

  bool Overlaps(const Box& other) const {
    return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
  }
  bool IsWithin(const Box& other) const {
    return left >= other.left && right <= other.right && top >= other.top && bottom <= other.bottom;
  }
};

Box BoxOf(double left, double middle, double width) {
  return {left - kGap, middle - kTextHeight / 2.0 - kGap, left + width + kGap, middle + kTextHeight / 2.0 + kGap};
}

// Finds free places for boxes in an image.
class FreePlaces {
 public:
  explicit FreePlaces(const Box& image) : image_(image) {}

  void Take(const Box& box) { taken_.push_back(box); }
  // Places the name beside its mark, as near as possible. False if there is no place.
  bool Place(PlacedMark& mark) {
    for (double distance = kMarkRadius + 4; distance < 150; distance += 12) {
      for (int turn = 0; turn < 8; ++turn) {
        static constexpr double kDirections[8][2] = {{1, 0}, {1, -1}, {-1, 0}, {-1, -1},
                                                     {1, 1}, {-1, 1}, {0, -1}, {0, 1}};
        const double dx = kDirections[turn][0], dy = kDirections[turn][1];
        mark.left = mark.x + dx * distance - (dx < 0 ? mark.width : dx > 0 ? 0 : mark.width / 2);
        mark.middle = mark.y + dy * (distance + (dx == 0 ? kTextHeight / 2.0 : 0));
        const Box box = BoxOf(mark.left, mark.middle, mark.width);
        const auto overlaps = [&](const Box& taken) { return taken.Overlaps(box); };
        if (!box.IsWithin(image_) || std::ranges::any_of(taken_, overlaps)) continue;
        mark.has_leader = distance > kMarkRadius + 10;
        Take(box);
        return true;
      }
    }
    return false;
  }

 private:
  const Box image_;
  std::vector<Box> taken_;
};

// Half way to white, to be read on a dark background.
DWORD Lighter(DWORD color) { return (color >> 1 & 0x7F7F7F) + 0x7F7F7F; }

// Determines the height of the drawing too. The rows must live as long as the layout.
PictureLayout PlaceLegend(const ViewOptions& view, std::span<const LegendRow> rows) {
  PictureLayout layout;
  layout.drawing_height = view.height;
  if (rows.empty()) return layout;
  double left = kStripMargin, middle = kRowHeight / 2.0;
  for (const LegendRow& row : rows) {
    const double width = kSampleWidth + 8 + TextWidth(row.text);
    if (left > kStripMargin && left + width > view.width - kStripMargin) {
      left = kStripMargin;
      middle += kRowHeight;
    }
    layout.rows.push_back({&row, left, middle});
    left += width + kColumnGap;
  }
  const int strip = int(middle + kRowHeight / 2.0) + kStripMargin;
  layout.drawing_height = std::max(view.height - strip, view.height / 2);
  for (PlacedRow& row : layout.rows) row.middle += layout.drawing_height;
  return layout;
}

// Places the names of the marks. The marks must live as long as the layout.
void PlaceMarks(const ViewOptions& view, const Camera& camera, std::span<const PictureMark> marks,
                PictureLayout& layout) {
  const Box image = {4, 4, view.width - 4.0, layout.drawing_height - 4.0};
  FreePlaces places(image);
  for (const PictureMark& mark : marks) {
    const double depth = camera.Depth(mark.at);
    if (depth < camera.near_plane || depth > camera.far_plane) continue;
    const FRPosition seen = camera.OnImage(mark.at);
    PlacedMark placed = {&mark,
                         (1 + seen.x()) / 2 * view.width,
                         (1 - seen.y()) / 2 * layout.drawing_height,
                         0,
                         0,
                         false,
                         TextWidth(mark.name)};
    const Box point = {placed.x - kMarkRadius, placed.y - kMarkRadius, placed.x + kMarkRadius, placed.y + kMarkRadius};
    if (!point.IsWithin(image)) continue;
    places.Take(point);
    layout.marks.push_back(placed);
  }
  std::erase_if(layout.marks, [&](PlacedMark& mark) { return !places.Place(mark); });
}

}  // namespace

double TextWidth(std::string_view utf8) {
  const auto starts = [](char byte) { return (byte & 0xC0) != 0x80; };
  return double(std::ranges::count_if(utf8, starts)) * kCharacterWidth;
}

std::optional<PlacedPicture> PlaceAll(Picture& picture, const PictureStyle& style, const ViewOptions& view) {
  const Standing standing = picture.Stands();
  const Extent extent = ExtentOf(picture, style, AxesOf(view.name, standing));
  if (extent.IsEmpty()) return std::nullopt;
  PlacedPicture placed;
  placed.size = extent.Size();
  placed.rows = picture.Legend();
  placed.marks = picture.Marks();
  for (PictureMark& mark : placed.marks)
    if (view.dark && mark.color) mark.color = Lighter(mark.color);
  placed.layout = PlaceLegend(view, placed.rows);
  placed.camera = CameraFor(view, standing, extent, view.width, placed.layout.drawing_height, kPictureMargin);
  PlaceMarks(view, placed.camera, placed.marks, placed.layout);
  return placed;
}

}  // namespace kestrova
