// Where the parts of a picture are: the drawing above, the legend in a strip below it, and the names of marks beside
// them, so that no text covers another one.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "host/pictures/picture.h"

namespace kestrova {

inline constexpr int kTextHeight = 15;     // of the font, pixels
inline constexpr int kSampleWidth = 34;    // of a row of the legend
inline constexpr int kSamplePoint = 12;    // the diameter of a point
inline constexpr int kPictureMargin = 56;  // around a fitted drawing, with room for the names

// Pixels from the top left corner.
struct PlacedRow {
  const LegendRow* row;
  double left, middle;  // of the sample; the text follows it
  double TextLeft() const { return left + kSampleWidth + 8; }
};

struct PlacedMark {
  const PictureMark* mark;
  double x, y;          // of the position
  double left, middle;  // of the name
  bool has_leader;      // the name is so far from the position that a line has to lead to it
  double width;         // of the name

  double LeaderEnd() const { return left > x ? left : std::min(left + width, x); }
};

struct PictureLayout {
  int drawing_height = 0;
  std::vector<PlacedRow> rows;
  std::vector<PlacedMark> marks;
};

// The width of a text in the font of pictures; at least as wide as it is drawn.
double TextWidth(std::string_view utf8);

// A picture with the camera that shows all of it and the places of its texts.
struct PlacedPicture {
  PlacedPicture() = default;
  PlacedPicture(PlacedPicture&&) = default;  // the layout points into the rows and marks
  PlacedPicture& operator=(PlacedPicture&&) = default;
  ~PlacedPicture() = default;

  double size = 0;  // of what the picture draws
  std::vector<LegendRow> rows;
  std::vector<PictureMark> marks;
  PictureLayout layout;
  Camera camera;
};

// Draws the picture once for its extent. nullopt if it has nothing to draw. A name without a free place, and one that
// the camera does not see, is left out.
std::optional<PlacedPicture> PlaceAll(Picture& picture, const PictureStyle& style, const ViewOptions& view);

}  // namespace kestrova
