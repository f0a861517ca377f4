// Draws the texts of a picture, its legend and the names of its marks, on any display.
#pragma once

#include "host/pictures/picture_layout.h"

namespace kestrova {

// The display draws one unit of a position as one pixel of the picture, y down. textTop: how far the position of a text
// is above the middle of its letters, in heights of the font.
void DrawTextsOf(const PictureLayout& layout, const PictureStyle& style, double textTop, QFDisplayInfo& display);

}  // namespace kestrova
