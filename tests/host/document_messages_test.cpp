// The document's answers to the library's core messages, and the callbacks for the active document; lengths and angles
// as it shows and reads them.
#include <cmath>
#include <limits>

#include "host/document/active_document.h"
#include "host/document/document_units.h"
#include "share/core/document_callbacks.h"
#include "share/core/document_messages.h"
#include "share/utilities/units.h"
#include "tests/host/document_fixture.h"

using namespace kestrova;

namespace {

using DocumentMessages = kvtest::DocumentTest;

TEST_F(DocumentMessages, ReadAndSetTheDocumentsProperties) {
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 38.0f) << "a new document is of the current version";
  SetActiveDocReadStorageUnits(31.6f);
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 31.6f);
  EXPECT_EQ(IsDocumentModified(), 0);
  SetDocumentModifiedFlag(1, nullptr);
  EXPECT_EQ(IsDocumentModified(), 1);
  EXPECT_TRUE(document_.IsModified());
  SetDocumentModifiedFlag(0, &document_);
  EXPECT_EQ(IsDocumentModified(), 0);

  EXPECT_EQ(IsDocumentUnitsMm(), 1);
  document_.SetUnits(kInches);
  EXPECT_EQ(IsDocumentUnitsMm(), 0);
  EXPECT_EQ(GetDocumentUnits(), kInches);
  EXPECT_EQ(IsMetricUnit(), 0);

  EXPECT_EQ(GetDocTitle(), _T("Untitled"));
  document_.SetTitle(_T("part.kvdoc"));
  EXPECT_EQ(GetDocTitle(), _T("part.kvdoc"));
  document_.SetServicePack(_T("SP3"));
  EXPECT_EQ(GetDocServicePack(), _T("SP3"));

  int flag = 0;
  EXPECT_EQ(SetShowExceptionMsgFlag(flag), 1);
  EXPECT_EQ(GetShowExceptionMsgFlag(flag = 7), 1);
  EXPECT_EQ(flag, 0);
}

TEST_F(DocumentMessages, ReportTheShownTree) {
  using enum HostDocument::Tree;
  for (const auto tree : {kFeatures, kOperations, kTools}) {
    document_.SetShownTree(tree);
    EXPECT_EQ(IsFEATTreeActive(), tree == kFeatures);
    EXPECT_EQ(IsOPERTreeActive(), tree == kOperations);
    EXPECT_EQ(IsToolTreeActive(), tree == kTools);
  }
}

TEST_F(DocumentMessages, RemoveACompanionFromTheSelection) {
  ui_QFObject a(&document_), b(&document_);
  document_.Select(&a);
  EXPECT_EQ(RemoveNodeFromSelection(&b), 0) << "it was not selected";
  EXPECT_EQ(RemoveNodeFromSelection(&a), 1);
  EXPECT_TRUE(document_.Selection().empty());
}

TEST_F(DocumentMessages, ReturnZeroForUnknownMessagesAndNull) {
  int value = 7;
  for (const int message : {0, 207, 248, 291})
    EXPECT_TRUE(SendToActiveDocument(QF_CORE_MESSAGE_ID(message), &value) == 0 && value == 7) << message;
  for (const int message : {201, 202, 203, 204, 205, 206, 227, 247, 269, 270, 271, 275, 276, 284, 290})
    EXPECT_EQ(SendToActiveDocument(QF_CORE_MESSAGE_ID(message), nullptr), 0) << message;
}

TEST_F(DocumentMessages, GoToTheActiveDocument) {
  EXPECT_EQ(GetActiveDocument(), &document_);
  EXPECT_EQ(qf_getActiveAutoIdHelper(), &document_.Indexer());
  EXPECT_EQ(GetIsDocFullyLoaded(), 1);
  {
    HostDocument other;
    const ActiveDocument active(&other);
    EXPECT_EQ(GetActiveDocument(), &other);
    EXPECT_EQ(GetNextObjectIdCB(), 1u);
    const ActiveDocument none(nullptr);
    EXPECT_EQ(GetNextObjectIdCB(), 0u);
    EXPECT_EQ(qf_getActiveAutoIdHelper(), nullptr);
    EXPECT_EQ(GetIsDocFullyLoaded(), 0);
  }
  EXPECT_EQ(GetActiveDocument(), &document_);
  EXPECT_EQ(GetNextObjectIdCB(), 1u);
  EXPECT_EQ(GetNextObjectIdCB(), 2u);
  document_.FreezeIds(true);
  EXPECT_EQ(GetNextObjectIdCB(), 0u);
}

constexpr double kPi = 3.14159265358979323846;

TEST(DocumentUnits, OmitTrailingZeros) {
  const std::tuple<double, const char*, const char*> kCases[] = {
      {0, "0mm", "0in"},
      {0.0125, "12.5mm", "0.49213in"},
      {0.0254, "25.4mm", "1in"},
      {1, "1000mm", "39.37008in"},
      {-0.00000004, "0mm", "0in"},
      {1e20, "1e+23mm", "3.93701e+21in"},
      {std::numeric_limits<double>::infinity(), "infmm", "infin"},
  };
  for (const auto& [metres, mm, inch] : kCases) {
    EXPECT_EQ(ToUtf8(LengthText(metres, *FindLengthUnit("mm"))), mm) << metres;
    EXPECT_EQ(ToUtf8(LengthText(metres, *FindLengthUnit("inch"))), inch) << metres;
  }
  EXPECT_EQ(ToUtf8(AngleText(kPi / 6)), "30deg");
  EXPECT_EQ(ToUtf8(AngleText(1)), "57.2958deg");
}

TEST(DocumentUnits, ReadUserInput) {
  // The metres in a document of millimetres and of inches.
  const std::tuple<const char*, double, double> kCases[] = {
      {" 12,5 ", 0.0125, 0.3175}, {"+1mm", 0.001, 0.001},  {"-2 cm", -0.02, -0.02}, {"3m", 3, 3},
      {"1 inch", 0.0254, 0.0254}, {"2\"", 0.0508, 0.0508}, {"1e2'", 30.48, 30.48},
  };
  for (const auto& [text, ofMm, ofInch] : kCases) {
    for (const auto& [unit, metres] : {std::pair{"mm", ofMm}, {"inch", ofInch}}) {
      double value = 0;
      EXPECT_TRUE(ParseLength(CString(text), *FindLengthUnit(unit), value)) << text;
      EXPECT_DOUBLE_EQ(value, metres) << text << " in " << unit;
    }
  }
  for (const char* text : {"", "mm", "1 mm 2", "1,000,000", "1,5.2", "inf", "1e999", "+-1", "1deg"}) {
    double value = 7;
    EXPECT_FALSE(ParseLength(CString(text), *FindLengthUnit("mm"), value)) << text;
    EXPECT_EQ(value, 7) << text;
  }
  double angle = 0;
  for (const auto& [text, radians] : {std::pair{_T("90"), kPi / 2}, {_T("180\u00B0"), kPi}, {_T("2 rad"), 2.0}}) {
    EXPECT_TRUE(ParseAngle(text, angle));
    EXPECT_DOUBLE_EQ(angle, radians);
  }
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
