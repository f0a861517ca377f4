// The records of geometry values, byte by byte.
#include "share/objects/geometry_archive.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/objects/archive_bytes.h"

namespace {

using kvtest::ExpectPrefixesRaise;
using kvtest::LoadHex;
using kvtest::StoredHex;

// Doubles by hand: 1, 2, 3, 4, 5, 6, 7, 8, 9, -0.5.
const std::string k1 = "000000000000F03F", k2 = "0000000000000040", k3 = "0000000000000840", k4 = "0000000000001040",
                  k5 = "0000000000001440", k6 = "0000000000001840", k7 = "0000000000001C40", k8 = "0000000000002040",
                  k9 = "0000000000002240", kMinusHalf = "000000000000E0BF", k0 = "0000000000000000";

// The value has those bytes, and those bytes give a value with the same ones; what is cut off raises.
template <class Value>
void ExpectRecord(const Value& value, const std::string& hex) {
  EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << value; }), hex);
  Value loaded;
  const auto load = [&](CArchive& ar) { ar >> loaded; };
  LoadHex(hex, load);
  EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << loaded; }), hex);
  ExpectPrefixesRaise(hex, load);
}

}  // namespace

TEST(GeometryArchive, RecordsHaveTheirExactBytes) {
  const FRMatrix matrix({1, 2, 3}, {4, 5, 6}, {7, 8, 9});
  const std::string matrixHex = k1 + k2 + k3 + k4 + k5 + k6 + k7 + k8 + k9;
  FRInterval interval;
  interval.set_low(5);
  interval.set_high(2);
  ExpectRecord(FRPosition(1, 2, 3), k1 + k2 + k3);
  ExpectRecord(FRVector(-0.5, 8, 9), kMinusHalf + k8 + k9);
  ExpectRecord(interval, k5 + k2);
  ExpectRecord(FRBox({1, 3, 5}, {2, 4, 6}), k1 + k2 + k3 + k4 + k5 + k6);
  ExpectRecord(matrix, matrixHex);
  ExpectRecord(FRTransf(matrix, {1, 2, 3}, -0.5, 1, 0, 2), matrixHex + k1 + k2 + k3 + kMinusHalf + "010000000200");
  ExpectRecord(FRTransf(matrix, {1, 2, 3}, -0.5, 0, 3, 0), matrixHex + k1 + k2 + k3 + kMinusHalf + "000003000000");
}

TEST(GeometryArchive, DirectionIsAVectorThatKeepsItsBits) {
  const FRUnitVector direction(1, 2, 3);
  const std::string hex = StoredHex([&](CArchive& ar) { ar << direction; });
  FRUnitVector loaded;
  LoadHex(hex, [&](CArchive& ar) { ar >> loaded; });
  EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << loaded; }), hex);
  LoadHex(k0 + k3 + k4, [&](CArchive& ar) { ar >> loaded; });
  EXPECT_EQ(loaded, FRUnitVector(0, 0.6, 0.8));
  for (const std::string& none : {k0, std::string("000000000000F87F"), std::string("000000000000F07F")}) {
    loaded = FRXAxis;
    LoadHex(none + k0 + k0, [&](CArchive& ar) { ar >> loaded; });
    EXPECT_EQ(loaded.len(), 0.0) << none;
  }
}

TEST(GeometryArchive, EveryBitPatternComesIn) {
  const std::string nan = "EFBEADDE0000F8FF";
  FRPosition position;
  LoadHex(nan + k1 + nan, [&](CArchive& ar) { ar >> position; });
  EXPECT_TRUE(std::isnan(position.x()));
  EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << position; }), nan + k1 + nan);
}
