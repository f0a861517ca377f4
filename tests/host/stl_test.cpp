// The reader of STL files with damaged files, and what is drawn of the triangles.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "host/pictures/solid.h"

namespace {

using namespace kestrova;

constexpr char kPlate[] =
    "solid Plate\n FACET normal 0 0 1\n outer loop\n vertex 0 0 0\n vertex +1.5e1 0 0\n vertex 0 1 0\n endloop\n"
    "endfacet\nendsolid Plate\n";

// The bytes of numbers on a little-endian machine.
template <class... Numbers>
std::string Bytes(Numbers... numbers) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&numbers), sizeof numbers), ...);
  return bytes;
}

std::string Binary(std::uint32_t count, float last = 1) {
  return std::string("solid").append(75, ' ') + Bytes(count) +
         Bytes(0.F, 0.F, 0.F, 0.F, 0.F, 0.F, 15.F, 0.F, 0.F, 0.F, last, 0.F) + std::string(2, '\0');
}

std::string With(std::string text, const char* word, const char* other) {
  return text.replace(text.find(word), std::strlen(word), other);
}

TEST(Stl, ReadsBothFormsAndSaysWhereAFileIsDamaged) {
  const struct {
    std::string bytes, reason;
    std::size_t byte;
    int line;
  } cases[] = {
      {kPlate, "", 0, 0},
      {Binary(1), "", 0, 0},
      {With(kPlate, "0 0 1", "nan nan nan"), "", 0, 0},
      {fmt::format("\n {}", kPlate), "", 0, 0},
      {"", "the file ends before the first triangle", 0, 0},
      {"solids", "the file ends before the first triangle", 6, 0},
      {std::string(83, ' '), "the file ends before", 83, 0},
      {With(Binary(2), "solid", "Solit"), "2 triangles are announced, which take 184 bytes, and the file has 134", 80,
       0},
      {With(Binary(0xFFFFFFFF), "solid", "Solit"), "4294967295 triangles are announced", 80, 0},
      {Binary(1, std::nanf("")), "a coordinate is not a finite number", 120, 0},
      {"solid x", "\"endsolid\" is missing", 0, 1},
      {With(kPlate, "vertex 0 1 0", "vertex 0 1"), "a number is missing", 0, 7},
      {With(kPlate, "vertex 0 1 0", "vertex 0 1 1e99"), "a coordinate is not a finite number", 0, 6},
      {With(kPlate, "vertex 0 1 0", "vertex 0 1 inf"), "a coordinate is not a finite number", 0, 6},
      {With(kPlate, "endloop", "vertex 1 1 1"), "\"endloop\" is missing", 0, 7},
      {fmt::format("{}x", kPlate), "\"solid\" is missing", 0, 10},
  };
  for (const auto& each : cases) {
    std::vector<StlTriangle> triangles;
    StlFailure failure;
    EXPECT_EQ(ReadStl(each.bytes, triangles, failure), each.reason.empty()) << failure.reason;
    EXPECT_TRUE(failure.reason.starts_with(each.reason)) << failure.reason;
    EXPECT_EQ(failure.byte, each.byte) << each.reason;
    EXPECT_EQ(failure.line, each.line) << each.reason;
    if (each.reason.empty()) {
      ASSERT_EQ(triangles.size(), 1U);
      EXPECT_EQ(triangles[0][1], (StlPoint{15, 0, 0}));
    }
  }
}

// A drum of that many sides about Z, as triangles of its wall and its two ends.
std::vector<StlTriangle> Drum(int sides) {
  const auto rim = [&](int side, float z) {
    const double angle = 2 * 3.14159265358979 * (side % sides) / sides;
    return StlPoint{float(std::cos(angle)), float(std::sin(angle)), z};
  };
  std::vector<StlTriangle> triangles;
  for (int i = 0; i < sides; ++i) {
    triangles.push_back({rim(i, 0), rim(i + 1, 0), rim(i + 1, 1)});
    triangles.push_back({rim(i, 0), rim(i + 1, 1), rim(i, 1)});
    triangles.push_back({StlPoint{0, 0, 0}, rim(i + 1, 0), rim(i, 0)});
    triangles.push_back({StlPoint{0, 0, 1}, rim(i, 1), rim(i + 1, 1)});
  }
  return triangles;
}

TEST(Solid, IsRoundWhereItBendsLittleAndHasEdgesWhereItBendsMuch) {
  for (const int sides : {8, 60}) {
    std::vector<StlTriangle> triangles = Drum(sides);
    triangles.push_back({triangles[0][0], triangles[0][0], triangles[0][1]});  // no area
    const Solid solid = SolidOf(triangles);
    EXPECT_EQ(solid.points.size(), std::size_t(2 * sides + 2));
    EXPECT_EQ(solid.triangles.size(), std::size_t(4 * sides));
    EXPECT_EQ(solid.edges.size(), std::size_t(sides < 13 ? 3 * sides : 2 * sides)) << sides;
    const StlPoint corner = solid.points[solid.triangles[0][0]], normal = solid.normals[0][0];
    const double turn = sides < 13 ? std::cos(3.14159265358979 / sides) : 1;
    EXPECT_NEAR(corner.x * normal.x + corner.y * normal.y, turn, 0.002) << sides;
    EXPECT_EQ(normal.z, 0);
  }
}

}  // namespace
