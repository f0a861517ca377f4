// DepthOrder sorts flat polygons and lines so that each covers those behind it when they are drawn one after the other.
// It cuts pieces that cross the plane of another one.
#pragma once

#include <cstddef>
#include <vector>

#include "host/pictures/view.h"

namespace kestrova {

struct DepthPiece {
  std::vector<FRPosition> points;  // two of a line, three or more of a flat convex polygon
  std::size_t item = 0;            // of the caller
};

inline constexpr std::size_t kMostPieces = 400'000;  // after the cuts

// The pieces from the farthest to the nearest for the camera. A line on a polygon comes after it. Throws Failure if
// there are more than kMostPieces.
std::vector<DepthPiece> DepthOrder(std::vector<DepthPiece> pieces, const Camera& camera);

}  // namespace kestrova
