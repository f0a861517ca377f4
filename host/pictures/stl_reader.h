// ReadStl reads the geometry file of a solid: STL, binary or text.
//
// The bytes may be anything: each count is compared with the bytes that are left before memory is taken, and a fault
// stops the reading. The triangles take less memory than the bytes. Any thread may call.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace kestrova {

struct StlPoint {
  float x, y, z;  // finite

  bool operator==(const StlPoint&) const = default;
};
using StlTriangle = std::array<StlPoint, 3>;

struct StlFailure {
  std::size_t byte = 0;  // offset of the fault in a binary file
  int line = 0;          // of the fault in a text file, from 1
  std::string reason;    // for humans; empty without a fault
};

inline constexpr std::size_t kMostTriangles = 5'000'000;  // of one file

// Appends the triangles and returns true. On a fault returns false with the failure; the triangles before the fault are
// appended. Normals in the file are not used: they follow from the corners. A text file may hold several solids.
bool ReadStl(std::string_view bytes, std::vector<StlTriangle>& triangles, StlFailure& failure);

}  // namespace kestrova
