// Lengths and angles as a document shows and reads them.
#include "host/document/document_units.h"

#include <cmath>
#include <limits>

#include "share/core/document_messages.h"
#include "share/utilities/units.h"
#include "tests/host/document_fixture.h"

using namespace kestrova;

namespace {

constexpr double kPi = 3.14159265358979323846;

TEST(DocumentUnits, OmitTrailingZeros) {
  const struct {
    double metres;
    const char* mm;
    const char* inch;
  } kCases[] = {
      {0, "0mm", "0in"},
      {0.0125, "12.5mm", "0.49213in"},
      {0.0254, "25.4mm", "1in"},
      {1, "1000mm", "39.37008in"},
      {-0.00000004, "0mm", "0in"},
      {1e20, "1e+23mm", "3.93701e+21in"},
      {std::numeric_limits<double>::infinity(), "infmm", "infin"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(ToUtf8(LengthText(c.metres, *FindLengthUnit("mm"))), c.mm) << c.metres;
    EXPECT_EQ(ToUtf8(LengthText(c.metres, *FindLengthUnit("inch"))), c.inch) << c.metres;
  }
  EXPECT_EQ(ToUtf8(AngleText(kPi / 6)), "30deg");
  EXPECT_EQ(ToUtf8(AngleText(1)), "57.2958deg");
}

TEST(DocumentUnits, ReadUserInput) {
  const struct {
    const char* text;
    double mm;  // in metres, in a document of millimetres
    double inch;
  } kCases[] = {
      {" 12,5 ", 0.0125, 0.3175}, {"+1mm", 0.001, 0.001},  {"-2 cm", -0.02, -0.02}, {"3m", 3, 3},
      {"1 inch", 0.0254, 0.0254}, {"2\"", 0.0508, 0.0508}, {"1e2'", 30.48, 30.48},
  };
  for (const auto& c : kCases) {
    double mm = 0, inch = 0;
    EXPECT_TRUE(ParseLength(CString(c.text), *FindLengthUnit("mm"), mm)) << c.text;
    EXPECT_TRUE(ParseLength(CString(c.text), *FindLengthUnit("inch"), inch)) << c.text;
    EXPECT_DOUBLE_EQ(mm, c.mm) << c.text;
    EXPECT_DOUBLE_EQ(inch, c.inch) << c.text;
  }
  for (const char* text : {"", "mm", "1 mm 2", "1,000,000", "1,5.2", "inf", "1e999", "+-1", "1deg"}) {
    double value = 7;
    EXPECT_FALSE(ParseLength(CString(text), *FindLengthUnit("mm"), value)) << text;
    EXPECT_EQ(value, 7) << text;
  }
  double angle = 0;
  EXPECT_TRUE(ParseAngle(_T("90"), angle));
  EXPECT_DOUBLE_EQ(angle, kPi / 2);
  EXPECT_TRUE(ParseAngle(_T("180\u00B0"), angle));
  EXPECT_DOUBLE_EQ(angle, kPi);
  EXPECT_TRUE(ParseAngle(_T("2 rad"), angle));
  EXPECT_DOUBLE_EQ(angle, 2);
  EXPECT_FALSE(ParseAngle(_T("1mm"), angle));
}

using DocumentUnitsOfALibrary = kvtest::DocumentTest;

// What the library's own functions get from the active document, by message 247.
TEST_F(DocumentUnitsOfALibrary, AreTheActiveDocuments) {
  EXPECT_EQ(ConvertLengthToUserUnits(0.0254), _T("25.4mm"));
  EXPECT_EQ(GetLengthUnitSpinIncrement(), 0.001);
  ASSERT_TRUE(document_.SetUnits(kInches));
  EXPECT_EQ(ConvertLengthToUserUnits(0.0254), _T("1in"));
  EXPECT_DOUBLE_EQ(ConvertLengthUserUnitsToSysValue(_T("1")), 0.0254);
  EXPECT_EQ(GetLengthUnitSpinIncrement(), 0.00254);
  EXPECT_EQ(ConvertAngleToUserUnits(kPi), _T("180deg"));
  EXPECT_DOUBLE_EQ(ConvertAngleUserUnitsToSysValue(_T("180")), kPi);
  EXPECT_DOUBLE_EQ(GetAngleUnitSpinIncrement(), kPi / 180);
  EXPECT_EQ(ConvertLengthUserUnitsToSysValue(_T("wide")), 0) << "no number, no value";
}

TEST_F(DocumentUnitsOfALibrary, RefuseUnknownRequests) {
  QFUnitsConversion request(QFeUnitsConversionType(3), QF_UNITS_LENGTH);
  EXPECT_EQ(SendToActiveDocument(QF_CORE_CONVERT_UNITS, &request), 0);
  QFUnitsConversion other(QF_UNITS_SYS_TO_USER, QFeUnitEntityType(2));
  EXPECT_EQ(SendToActiveDocument(QF_CORE_CONVERT_UNITS, &other), 0);
  EXPECT_EQ(other.GetUserUnit(), _T(""));
  EXPECT_FALSE(document_.SetUnits(1)) << "centimetres are no document's";
}

}  // namespace
