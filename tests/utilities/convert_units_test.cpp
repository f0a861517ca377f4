// The scales of the system's neighbours.
#include "share/utilities/convert_units.h"

#include <gtest/gtest.h>

#include "tests/geometry_print.h"

TEST(ConvertUnits, InternalScalesAreOne) {
  double value = 1.25;
  FRPosition position(1, 2, 3);
  EXPECT_EQ(QFConvertUnits::ConvertToMM(value), 1.25);
  EXPECT_EQ(QFConvertUnits::ConverToMeters(value), 1.25);
  EXPECT_EQ(QFConvertUnits::ConvertToMM(position), FRPosition(1, 2, 3));
  EXPECT_EQ(QFConvertUnits::ConverToMeters(position), FRPosition(1, 2, 3));
  const FRTransf transform = GetTranslateTransf({1, 2, 3});
  EXPECT_EQ(QFConvertUnits::ConvertTransfToMeters(transform), transform);
}

TEST(ConvertUnits, OutsideLibraryIsAThousandfold) {
  FRPosition position(1, -2, 0.5);
  QFConvertUnits::RetainToMMForVero(position);
  EXPECT_EQ(position, FRPosition(1000, -2000, 500));
  double value = -1.25;
  QFConvertUnits::RetainToMMForVero(value);
  EXPECT_EQ(value, -1250.0);
  QFConvertUnits::RetainToMetersForVero(value);
  EXPECT_EQ(value, -1.25);
  for (double third = 1.0 / 3; third < 1e9; third *= 7) {
    double there = third;
    QFConvertUnits::RetainToMMForVero(there);
    QFConvertUnits::RetainToMetersForVero(there);
    EXPECT_DOUBLE_EQ(there, third);
  }
}

TEST(ConvertUnits, EveryCallerHasItsPair) {
  using Units = QFConvertUnits;
  const struct {
    double (*convert)(const double&);
    void (*retain)(double&);
  } rows[] = {
      {Units::KVThreadToolpath_ConvertToMM, Units::KVThreadToolpath_RetainToMMForVero},
      {Units::QFFaceMill_ConvertToMM, Units::QFFaceMill_RetainToMMForVero},
      {Units::QFFaceTpFeature_ConvertToMM, Units::QFFaceTpFeature_RetainToMMForVero},
      {Units::QFFinishTpFeature_ConvertToMM, Units::QFFinishTpFeature_RetainToMMForVero},
      {Units::QFFinishing_ConvertToMM, Units::QFFinishing_RetainToMMForVero},
      {Units::QFLeadin_ConvertToMM, Units::QFLeadin_RetainToMMForVero},
      {Units::QFLeadout_ConvertToMM, Units::QFLeadout_RetainToMMForVero},
      {Units::QFNC_ConvertToMM, Units::QFNC_RetainToMMForVero},
      {Units::QFRoughTpFeature_ConvertToMM, Units::QFRoughTpFeature_RetainToMMForVero},
      {Units::QFRoughing_ConvertToMM, Units::QFRoughing_RetainToMMForVero},
      {Units::QFSetup_ConvertToMM, Units::QFSetup_RetainToMMForVero},
      {Units::QFThreadMill_ConvertToMM, Units::QFThreadMill_RetainToMMForVero},
      {Units::QFTpBaseFeature_ConvertToMM, Units::QFTpBaseFeature_RetainToMMForVero},
      {Units::QFTpMillFeature_ConvertToMM, Units::QFTpMillFeature_RetainToMMForVero},
      {Units::KVNCManager_ConvertToMM, nullptr},
      {Units::QFToolParam_ConvertToMM, Units::QFToolParam_RetainToMM},
  };
  for (const auto& row : rows) {
    double value = 0.5;
    EXPECT_EQ(row.convert(value), 0.5) << &row - rows;
    if (!row.retain) continue;
    row.retain(value);
    EXPECT_EQ(value, 500.0) << &row - rows;
  }
}

TEST(ConvertUnits, SharedFlagsAreKept) {
  EXPECT_EQ(QFConvertUnits::GetConvertionStart(), 0);
  EXPECT_FALSE(QFConvertUnits::GetGeneratingToolpath());
  QFConvertUnits::SetConvertionStart(5);
  QFConvertUnits::SetGeneratingToolpath(true);
  EXPECT_EQ(QFConvertUnits::GetConvertionStart(), 5);
  EXPECT_TRUE(QFConvertUnits::GetGeneratingToolpath());
  QFConvertUnits::SetConvertionStart(0);
  QFConvertUnits::SetGeneratingToolpath(false);
}
