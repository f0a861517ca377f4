// What a picture shows, independent of how it is drawn.
#pragma once

#include <string>
#include <vector>

#include "host/pictures/view.h"
#include "share/display/display_info.h"

namespace kestrova {

// 0x00BBGGRR, for a white and a dark background.
struct PictureColors {
  DWORD background;
  DWORD lines;  // texts, frames, and what has no colour of its own
  DWORD rapid;
  DWORD edges;  // of solids
};
inline constexpr PictureColors kOnWhite = {0xFFFFFF, 0x000000, 0x0000C0, 0x3C3834};
inline constexpr PictureColors kOnDark = {0x2A2622, 0xF0F0F0, 0x7070FF, 0x181614};

inline constexpr DWORD kHighlightColor = 0x00C8FF;
inline constexpr int kHighlightWidth = 3;  // of highlighted lines, in widths of the others

inline constexpr ULONGLONG kMostPositions = 10'000'000;  // of one picture of a document

struct PictureStyle {
  PictureColors colors = kOnWhite;
  int scale = 1;  // of line widths
};

struct LegendRow {
  enum class Sample { kLine, kDashes, kArea, kPoint, kText };

  Sample sample = Sample::kLine;
  DWORD color = 0;
  std::string text;              // UTF-8
  std::string sample_text = {};  // of kText, a few characters
};

// A named position.
struct PictureMark {
  FRPosition at;
  DWORD color = 0;        // 0: that of lines
  std::string name;       // UTF-8
  bool has_point = true;  // a point marks the position
};

class Picture {
 public:
  Picture() = default;
  virtual ~Picture() = default;
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  // Draws all that is in the model. The line width of the display is already scaled. It is called once for each pass of
  // a drawing and draws the same each time.
  virtual void Draw(QFDisplayInfo& display, const PictureStyle& style) = 0;
  // Draws what is seen through the rest.
  virtual void DrawOnTop(QFDisplayInfo&, const PictureStyle&) {}
  // What the last Draw has found.
  virtual std::vector<LegendRow> Legend() const { return {}; }
  virtual std::vector<PictureMark> Marks() const { return {}; }
  virtual Standing Stands() const { return {}; }
};

// The extent of all that the picture draws, along the axes of the view.
Extent ExtentOf(Picture& picture, const PictureStyle& style, const ViewAxes& axes);

}  // namespace kestrova
