// The records of geometry values, byte by byte.
#include "share/objects/geometry_archive.h"

#include <gtest/gtest.h>

#include "tests/archive_bytes.h"

namespace {

// Doubles built by hand: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -0.5, and a NaN with a payload.
const std::string k0 = "00 00 00 00 00 00 00 00 ", k1 = "00 00 00 00 00 00 F0 3F ", k2 = "00 00 00 00 00 00 00 40 ",
                  k3 = "00 00 00 00 00 00 08 40 ", k4 = "00 00 00 00 00 00 10 40 ", k5 = "00 00 00 00 00 00 14 40 ",
                  k6 = "00 00 00 00 00 00 18 40 ", k7 = "00 00 00 00 00 00 1C 40 ", k8 = "00 00 00 00 00 00 20 40 ",
                  k9 = "00 00 00 00 00 00 22 40 ", kMinusHalf = "00 00 00 00 00 00 E0 BF ",
                  kNaN = "EF BE AD DE 00 00 F8 FF ";

template <class Value>
std::string StoredHex(const Value& value) {
  return kvtest::Hex(kvtest::Store([&](CArchive& ar) { ar << value; })) + ' ';
}

template <class Value>
Value Loaded(const std::string& hex) {
  Value value;
  kvtest::Load(kvtest::Bytes(hex), [&](CArchive& ar) { ar >> value; });
  return value;
}

// The bytes load as a value that is stored as the same bytes; each shorter prefix raises.
template <class Value>
void ExpectLoads(const std::string& hex) {
  EXPECT_EQ(StoredHex(Loaded<Value>(hex)), hex);
  kvtest::ExpectPrefixesRaise(kvtest::Bytes(hex), [](CArchive& ar) {
    Value value;
    ar >> value;
  });
}

template <class Value>
void ExpectRecord(const Value& value, const std::string& hex) {
  EXPECT_EQ(StoredHex(value), hex);
  ExpectLoads<Value>(hex);
}

}  // namespace

TEST(GeometryArchive, RecordsHaveTheirExactBytes) {
  const FRMatrix matrix({1, 2, 3}, {4, 5, 6}, {7, 8, 9});
  const std::string matrixHex = k1 + k2 + k3 + k4 + k5 + k6 + k7 + k8 + k9;
  FRInterval interval;
  interval.set_low(5);
  interval.set_high(2);
  ExpectRecord(FRPosition(1, 2, 3), k1 + k2 + k3);
  ExpectLoads<FRPosition>(kNaN + k1 + kNaN);
  ExpectRecord(FRVector(-0.5, 8, 9), kMinusHalf + k8 + k9);
  ExpectRecord(interval, k5 + k2);
  ExpectRecord(FRBox({1, 3, 5}, {2, 4, 6}), k1 + k2 + k3 + k4 + k5 + k6);
  ExpectRecord(matrix, matrixHex);
  ExpectRecord(FRTransf(matrix, {1, 2, 3}, -0.5, 1, 0, 2),
               matrixHex + k1 + k2 + k3 + kMinusHalf + "01 00 00 00 02 00 ");
  ExpectRecord(FRTransf(matrix, {1, 2, 3}, -0.5, 0, 3, 0),
               matrixHex + k1 + k2 + k3 + kMinusHalf + "00 00 03 00 00 00 ");
}

TEST(GeometryArchive, DirectionIsAVectorThatKeepsItsBits) {
  const std::string hex = StoredHex(FRUnitVector(1, 2, 3));
  EXPECT_EQ(StoredHex(Loaded<FRUnitVector>(hex)), hex);
  EXPECT_EQ(Loaded<FRUnitVector>(k0 + k3 + k4), FRUnitVector(0, 0.6, 0.8));
  for (const char* none : {"00 00 00 00 00 00 00 00", "00 00 00 00 00 00 F8 7F", "00 00 00 00 00 00 F0 7F"}) {
    FRUnitVector loaded = FRXAxis;
    kvtest::Load(kvtest::Bytes(none + k0 + k0), [&](CArchive& ar) { ar >> loaded; });
    EXPECT_EQ(loaded.len(), 0.0) << none;
  }
}
