// A solid as it is drawn: triangles with a normal at each corner, and the edges where its surface bends.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/pictures/stl_reader.h"

namespace kestrova {

struct Solid {
  std::vector<StlPoint> points;  // each once
  std::vector<std::array<std::uint32_t, 3>> triangles;
  std::vector<StlTriangle> normals;  // of the corners, of length 1
  std::vector<std::array<std::uint32_t, 2>> edges;
};

// Triangles without an area are left out. Where triangles meet at a small angle the surface is round: they share their
// normals, and there is no edge.
Solid SolidOf(std::span<const StlTriangle> triangles);

}  // namespace kestrova
