// Draws the texts of a picture, its legend and the names of its marks, on any display.
#pragma once

#include "host/pictures/picture_layout.h"

namespace kestrova {

// How a display places texts and points.
struct FlatDevice {
  double text_top;  // from the middle of the letters up to the position of a text, in heights of the font
  double point;     // the size that a point of the diameter 1 is drawn with
};

// The display draws one unit of a position as one pixel of the picture, y down.
void DrawTextsOf(const PictureLayout& layout, const PictureStyle& style, const FlatDevice& device,
                 QFDisplayInfo& display);

}  // namespace kestrova
