// Requests for units without a document that answers them (what a document answers:
// tests/host/document_messages_test.cpp), and conversions to the units of other libraries.
#include "share/utilities/units.h"

#include "share/objects/object.h"
#include "share/utilities/convert_units.h"
#include "tests/geometry_print.h"
#include "tests/registered.h"

namespace {

QFObject* g_document = nullptr;

TEST(Units, NobodyToAskGivesEmptyAndZero) {
  QFObject silent;
  kvtest::Register({.document = [] { return g_document; }});
  for (QFObject* document : {static_cast<QFObject*>(nullptr), &silent}) {
    g_document = document;
    EXPECT_EQ(ConvertLengthToUserUnits(1), _T(""));
    EXPECT_EQ(ConvertAngleUserUnitsToSysValue(_T("1")), 0.0);
    EXPECT_EQ(GetLengthUnitSpinIncrement(), 0.0);
  }
  kvtest::Register({});
}

TEST(ConvertUnits, OutsideLibraryAloneIsAThousandfold) {
  FRPosition position(1, -2, 0.5);
  EXPECT_EQ(QFConvertUnits::ConvertToMM(position), position);
  EXPECT_EQ(QFConvertUnits::ConverToMeters(position), position);
  const FRTransf transform = GetTranslateTransf({1, 2, 3});
  EXPECT_EQ(QFConvertUnits::ConvertTransfToMeters(transform), transform);
  QFConvertUnits::RetainToMMForVero(position);
  EXPECT_EQ(position, FRPosition(1000, -2000, 500));
  double value = -1.25;
  EXPECT_EQ(QFConvertUnits::ConverToMeters(value), -1.25);
  QFConvertUnits::RetainToMMForVero(value);
  EXPECT_EQ(value, -1250.0);
  QFConvertUnits::RetainToMetersForVero(value);
  EXPECT_EQ(value, -1.25);
}

TEST(ConvertUnits, CallersHaveTheSame) {
  double value = 0.5;
  EXPECT_EQ(QFConvertUnits::QFLeadin_ConvertToMM(value) + QFConvertUnits::KVNCManager_ConvertToMM(value) +
                QFConvertUnits::QFToolParam_ConvertToMM(value),
            1.5);
  QFConvertUnits::QFLeadin_RetainToMMForVero(value);
  EXPECT_EQ(value, 500.0);
  QFConvertUnits::QFToolParam_RetainToMM(value);
  EXPECT_EQ(value, 500000.0);
}

}  // namespace
