// The parameter helpers of documents and setups, and their records.
#include "share/objects/param_helpers.h"

#include <gtest/gtest.h>

#include "tests/geometry_print.h"
#include "tests/objects/loaded_object.h"

using namespace kvtest;

TEST(DocParamHelper, ArchiveHoldsTheUnitsAlone) {
  for (const int units : {-1, 0, 1, 3}) EXPECT_EQ(QFDocParamHelper(units).IsDocumentUnitsMm(), units == 0) << units;
  const std::string bytes = RecordBytes().NewClass("QFDocParamHelper", 1).Raw(-2).Get();
  QFDocParamHelper helper(-2);
  helper.SetDocParamReadStorageUnits(31.6f);
  helper.SetDocumentModifiedFlag(1);
  EXPECT_EQ(Hex(StoredObject(helper)), Hex(bytes));
  const auto loaded = LoadedObject<QFDocParamHelper>(bytes);
  EXPECT_EQ(loaded->GetDocParamUnits(), -2);
  EXPECT_EQ(loaded->GetDocParamReadStorageUnits(), 38.0f);
  EXPECT_EQ(loaded->IsDocumentModified(), 0);
  ExpectEveryPrefixRaises<QFDocParamHelper>(bytes);
  // Created by the run-time class.
  const std::unique_ptr<CObject> fresh(RUNTIME_CLASS(QFDocParamHelper)->CreateObject());
  EXPECT_EQ(DYNAMIC_DOWNCAST(QFDocParamHelper, fresh.get())->GetDocParamUnits(), -1);
}

TEST(SetupParamHelper, ArchiveHasItsOwnOrder) {
  QFSetupParamHelper helper;
  helper.SetDirection(FRUnitVector(0, 1, 0));
  helper.SetReferencePosition({1, 2, 3});
  helper.SetAngle(4);
  helper.SetFromPoint({5, 6, 7});
  helper.SetClearance(8);
  RecordBytes bytes;
  bytes.NewClass("QFSetupParamHelper", 1);
  for (const double number : {0, 1, 0, /*reference position*/ 1, 2, 3, /*from point*/ 5, 6, 7}) bytes.Double(number);
  bytes.Double(/*clearance*/ 8).Double(/*angle*/ 4);
  EXPECT_EQ(Hex(StoredObject(helper)), Hex(bytes.Get()));
  EXPECT_EQ(Hex(StoredObject(*LoadedObject<QFSetupParamHelper>(bytes.Get()))), Hex(bytes.Get()));
  ExpectEveryPrefixRaises<QFSetupParamHelper>(bytes.Get());
}

TEST(SetupParamHelper, MovesThenTiltsThenTurns) {
  QFSetupParamHelper helper;  // along Z: a half turn about Y
  ExpectNear(FRPosition(1, 2, 3) * helper.Transform(), {-1, 2, -3}, 1e-15);
  helper.SetDirection(FRUnitVector(-1, 0, 0));
  helper.SetReferencePosition({10, 20, 30});
  // The opposite of the direction, X, goes to Z and Z to -X.
  ExpectNear(FRPosition(11, 22, 33) * helper.Transform(), {-3, 2, 1}, 1e-14);
  helper.SetAngle(PI_2);  // about -Z: X goes to -Y, Y to X
  ExpectNear(FRPosition(11, 22, 33) * helper.Transform(), {2, 3, 1}, 1e-14);
  helper.SetDirection(FRUnitVector());
  ExpectNear(FRPosition(11, 22, 33) * helper.Transform(), {2, -1, 3}, 1e-14);
}
