// Draws a picture on a device context, an image in memory.
#pragma once

#include "host/pictures/picture_layout.h"
#include "host/pictures/pixels.h"

namespace kestrova {

// The picture with its legend and names, smooth as OpenGLPicture draws it; no pixels if it has nothing to draw. Not
// smooth: each pixel is drawn once, for comparisons. A device context hides nothing and shades nothing: later shapes
// cover earlier ones. The view must not have an eye: polylines of a device context have no perspective. Throws Failure
// if there are no device contexts.
Pixels DrawByGdi(Picture& picture, const ViewOptions& view, bool smooth = true);

}  // namespace kestrova
