// What documents and setups tell of their parameters, and their objects in an archive.
#include "share/objects/param_helpers.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/geometry_print.h"
#include "tests/objects/archive_bytes.h"

namespace {

using kvtest::ExpectNear;
using kvtest::ExpectPrefixesRaise;
using kvtest::LoadHex;
using kvtest::StoredHex;

// The header of a new object of schema 1 and that name.
std::string Header(const std::string& name) {
  const auto length = std::uint8_t(name.size());
  return "FFFF0100" + kvtest::HexOf(&length, 1) + "00" + kvtest::HexOf(name.data(), name.size());
}

template <class Helper>
std::unique_ptr<Helper> Load(const std::string& hex) {
  Helper* helper = nullptr;
  LoadHex(hex, [&](CArchive& ar) { ar >> helper; });
  return std::unique_ptr<Helper>(helper);
}

}  // namespace

TEST(DocParamHelper, KnowsMillimetres) {
  for (const int units : {-1, 0, 1, 3}) EXPECT_EQ(QFDocParamHelper(units).IsDocumentUnitsMm(), units == 0) << units;
  // As the run-time class makes it.
  const std::unique_ptr<QFDocParamHelper> fresh(
      DYNAMIC_DOWNCAST(QFDocParamHelper, RUNTIME_CLASS(QFDocParamHelper)->CreateObject()));
  EXPECT_EQ(fresh->GetDocParamUnits(), -1);
  EXPECT_EQ(fresh->GetDocParamReadStorageUnits(), 38.0f);
  EXPECT_EQ(fresh->IsDocumentModified(), 0);
  EXPECT_TRUE(fresh->IsKindOf(RUNTIME_CLASS(QFParamHelper)));
}

TEST(DocParamHelper, ArchiveHoldsTheUnitsAlone) {
  const std::string hex = Header("QFDocParamHelper") + "FEFFFFFF";
  QFDocParamHelper helper(-2);
  helper.SetDocParamReadStorageUnits(31.6f);
  helper.SetDocumentModifiedFlag(1);
  EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << &helper; }), hex);
  const auto loaded = Load<QFDocParamHelper>(hex);
  ASSERT_TRUE(loaded);
  EXPECT_EQ(loaded->GetDocParamUnits(), -2);
  EXPECT_EQ(loaded->GetDocParamReadStorageUnits(), 38.0f);
  EXPECT_EQ(loaded->IsDocumentModified(), 0);
  ExpectPrefixesRaise(hex, [](CArchive& ar) {
    QFDocParamHelper* none = nullptr;
    ar >> none;
  });
}

TEST(SetupParamHelper, ArchiveHasItsOwnOrder) {
  QFSetupParamHelper helper;
  helper.SetDirection(FRUnitVector(0, 1, 0));
  helper.SetReferencePosition({1, 2, 3});
  helper.SetAngle(4);
  helper.SetFromPoint({5, 6, 7});
  helper.SetClearance(8);
  const std::string hex = Header("QFSetupParamHelper") +  //
                          "0000000000000000"
                          "000000000000F03F"
                          "0000000000000000"  // direction
                          "000000000000F03F"
                          "0000000000000040"
                          "0000000000000840"  // reference position
                          "0000000000001440"
                          "0000000000001840"
                          "0000000000001C40"   // from point
                          "0000000000002040"   // clearance
                          "0000000000001040";  // angle
  EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << &helper; }), hex);
  const auto loaded = Load<QFSetupParamHelper>(hex);
  ASSERT_TRUE(loaded);
  EXPECT_EQ(loaded->Direction(), FRYAxis);
  EXPECT_EQ(loaded->GetReferencePosition(), FRPosition(1, 2, 3));
  EXPECT_EQ(loaded->FromPoint(), FRPosition(5, 6, 7));
  EXPECT_EQ(loaded->Clearance(), 8.0);
  EXPECT_EQ(loaded->GetAngle(), 4.0);
  ExpectPrefixesRaise(hex, [](CArchive& ar) {
    QFSetupParamHelper* none = nullptr;
    ar >> none;
  });
}

TEST(SetupParamHelper, NewOneMakesAHalfTurnAboutY) {
  const QFSetupParamHelper helper;
  EXPECT_EQ(helper.Direction(), FRZAxis);
  EXPECT_EQ(helper.GetAngle() + helper.Clearance(), 0.0);
  EXPECT_EQ(helper.FromPoint(), FRPosition());
  ExpectNear(FRPosition(1, 2, 3) * helper.Transform(), {-1, 2, -3}, 1e-15);
}

TEST(SetupParamHelper, MovesThenTiltsThenTurns) {
  QFSetupParamHelper helper;
  helper.SetDirection(FRUnitVector(-1, 0, 0));
  helper.SetReferencePosition({10, 20, 30});
  // The opposite of the direction, X, goes to Z and Z to -X.
  ExpectNear(FRPosition(11, 22, 33) * helper.Transform(), {-3, 2, 1}, 1e-14);
  helper.SetAngle(PI_2);  // about -Z: X goes to -Y, Y to X
  ExpectNear(FRPosition(11, 22, 33) * helper.Transform(), {2, 3, 1}, 1e-14);
  helper.SetDirection(FRUnitVector());
  ExpectNear(FRPosition(11, 22, 33) * helper.Transform(), {2, -1, 3}, 1e-14);
}
