// Draws a picture as SVG: the items of a recording, projected by a QFCamera.
#pragma once

#include <string>

#include "host/pictures/picture_layout.h"

namespace kestrova {

// The text of the file; empty if the picture has nothing to draw. Shaded surfaces hide what is behind them. Throws
// Failure if there are too many of them for a file that other programs can show.
std::string SvgOf(Picture& picture, const ViewOptions& view);

}  // namespace kestrova
