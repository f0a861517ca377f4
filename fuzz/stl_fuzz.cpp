// Reads any bytes as a geometry file and prepares the solid for drawing. Its indices must be within its lists.
#include <cstdlib>
#include <string_view>

#include "host/pictures/solid.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::vector<kestrova::StlTriangle> triangles;
  kestrova::StlFailure failure;
  const bool read = kestrova::ReadStl({reinterpret_cast<const char*>(bytes), size}, triangles, failure);
  if (read != failure.reason.empty() || failure.byte > size) std::abort();
  const kestrova::Solid solid = kestrova::SolidOf(triangles);
  if (solid.triangles.size() > triangles.size() || solid.normals.size() != solid.triangles.size()) std::abort();
  for (const auto& triangle : solid.triangles)
    for (const std::uint32_t corner : triangle)
      if (corner >= solid.points.size()) std::abort();
  for (const auto& edge : solid.edges)
    if (edge[0] >= edge[1] || edge[1] >= solid.points.size()) std::abort();
  return 0;
}
