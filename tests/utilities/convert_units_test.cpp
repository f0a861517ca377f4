// The scales of the system's neighbours.
#include "share/utilities/convert_units.h"

#include <gtest/gtest.h>

#include "tests/geometry_print.h"

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
