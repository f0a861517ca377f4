// The pixels of a region, row by row.
#pragma once

#include <vector>

#include "platform/drawing.h"

// An area of pixels: a polygon in the mode ALTERNATE, or a rectangle if there are no points.
struct RegionShape {
  std::vector<POINT> points;
  RECT rect = {};
};

// Rectangles without overlaps, in the order of their rows and then of their columns: the part of the region that lies
// in `bounds`. A pixel of a polygon belongs to it if its place is inside, on a left edge or on a top edge. The time
// depends on the polygon's points and its rows within the bounds; coordinates may have any value.
std::vector<RECT> RectsOfRegion(const RegionShape& region, const RECT& bounds);
