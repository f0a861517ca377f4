#include "host/pictures/solid.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace kestrova {
namespace {

constexpr float kRound = 0.883F;             // the cosine of 28 degrees: triangles that bend less share normals
constexpr std::uint32_t kMostAtPoint = 100;  // triangles that share normals at one point

StlPoint operator+(const StlPoint& a, const StlPoint& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
float Dot(const StlPoint& a, const StlPoint& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// In doubles, because products of large coordinates are beyond floats. False without a direction.
bool Normal(const StlTriangle& triangle, StlPoint& normal) {
  const StlPoint &a = triangle[0], &b = triangle[1], &c = triangle[2];
  const double ux = double(b.x) - a.x, uy = double(b.y) - a.y, uz = double(b.z) - a.z;
  const double vx = double(c.x) - a.x, vy = double(c.y) - a.y, vz = double(c.z) - a.z;
  const double x = uy * vz - uz * vy, y = uz * vx - ux * vz, z = ux * vy - uy * vx;
  const double length = std::sqrt(x * x + y * y + z * z);
  if (!(length > 0) || !std::isfinite(length)) return false;
  normal = {float(x / length), float(y / length), float(z / length)};
  return true;
}

struct PointHash {
  std::size_t operator()(const StlPoint& point) const {
    std::size_t hash = 0;
    for (const float coordinate : {point.x, point.y, point.z})
      hash = (hash ^ std::hash<float>()(coordinate)) * 0x9E3779B97F4A7C15;  // 0.0 and -0.0 have the same hash
    return hash ^ (hash >> 32);
  }
};

// The triangles at each point: those of point p are in faces[start[p]] to faces[start[p + 1] - 1].
struct Neighbours {
  std::vector<std::uint32_t> start, faces;

  explicit Neighbours(const Solid& solid) : start(solid.points.size() + 1), faces(3 * solid.triangles.size()) {
    for (const auto& triangle : solid.triangles)
      for (const std::uint32_t point : triangle) ++start[point];
    std::uint32_t sum = 0;
    for (std::uint32_t& place : start) place = (sum += place);
    for (std::uint32_t face = 0; face < solid.triangles.size(); ++face)
      for (const std::uint32_t point : solid.triangles[face]) faces[--start[point]] = face;
  }
};

struct Side {
  std::uint32_t from, to, face;
};

std::vector<StlPoint> Weld(std::span<const StlTriangle> triangles, Solid& solid) {
  std::vector<StlPoint> normals;
  std::unordered_map<StlPoint, std::uint32_t, PointHash> numbers;
  for (const StlTriangle& triangle : triangles) {
    StlPoint normal;
    if (!Normal(triangle, normal)) continue;
    std::array<std::uint32_t, 3> corners;
    for (std::size_t i = 0; i < 3; ++i) {
      const auto [at, added] = numbers.try_emplace(triangle[i], std::uint32_t(solid.points.size()));
      if (added) solid.points.push_back(triangle[i]);
      corners[i] = at->second;
    }
    solid.triangles.push_back(corners);
    normals.push_back(normal);
  }
  return normals;
}

void Smooth(const std::vector<StlPoint>& faceNormals, Solid& solid) {
  const Neighbours neighbours(solid);
  solid.normals.reserve(solid.triangles.size());
  for (std::size_t face = 0; face < solid.triangles.size(); ++face) {
    const StlPoint& own = faceNormals[face];
    StlTriangle normals = {own, own, own};
    for (std::size_t corner = 0; corner < 3; ++corner) {
      const std::uint32_t point = solid.triangles[face][corner];
      const std::uint32_t first = neighbours.start[point], end = neighbours.start[point + 1];
      if (end - first > kMostAtPoint) continue;
      StlPoint sum = {};
      for (std::uint32_t at = first; at < end; ++at) {
        const StlPoint& other = faceNormals[neighbours.faces[at]];
        if (Dot(own, other) > kRound) sum = sum + other;
      }
      const float length = std::sqrt(Dot(sum, sum));
      if (length > 0) normals[corner] = {sum.x / length, sum.y / length, sum.z / length};
    }
    solid.normals.push_back(normals);
  }
}

void FindEdges(const std::vector<StlPoint>& faceNormals, Solid& solid) {
  std::vector<Side> sides;
  sides.reserve(3 * solid.triangles.size());
  for (std::uint32_t face = 0; face < solid.triangles.size(); ++face) {
    const auto& corners = solid.triangles[face];
    for (std::size_t i = 0; i < 3; ++i) {
      const std::uint32_t a = corners[i], b = corners[(i + 1) % 3];
      sides.push_back({std::min(a, b), std::max(a, b), face});
    }
  }
  std::ranges::sort(sides, {}, [](const Side& side) { return std::pair(side.from, side.to); });
  for (std::size_t at = 0, end = 0; at < sides.size(); at = end) {
    for (end = at; end < sides.size() && sides[end].from == sides[at].from && sides[end].to == sides[at].to;) ++end;
    const bool round = end - at == 2 && Dot(faceNormals[sides[at].face], faceNormals[sides[at + 1].face]) > kRound;
    if (!round) solid.edges.push_back({sides[at].from, sides[at].to});
  }
}

}  // namespace

Solid SolidOf(std::span<const StlTriangle> triangles) {
  Solid solid;
  const std::vector<StlPoint> normals = Weld(triangles, solid);
  Smooth(normals, solid);
  FindEdges(normals, solid);
  return solid;
}

}  // namespace kestrova
