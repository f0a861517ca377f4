// Parts of nodes, their exact records and copies: geometry values, the parameter helpers of documents and setups, and
// the error flag.
#include "share/objects/flagged_error.h"
#include "share/objects/geometry_archive.h"
#include "share/objects/param_helpers.h"
#include "tests/geometry_print.h"
#include "tests/objects/dumped.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"
#include "tests/values.h"

using namespace kvtest;

namespace {

// Doubles built by hand: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -0.5, and a NaN with a payload.
const std::string k0 = "00 00 00 00 00 00 00 00 ", k1 = "00 00 00 00 00 00 F0 3F ", k2 = "00 00 00 00 00 00 00 40 ",
                  k3 = "00 00 00 00 00 00 08 40 ", k4 = "00 00 00 00 00 00 10 40 ", k5 = "00 00 00 00 00 00 14 40 ",
                  k6 = "00 00 00 00 00 00 18 40 ", k7 = "00 00 00 00 00 00 1C 40 ", k8 = "00 00 00 00 00 00 20 40 ",
                  k9 = "00 00 00 00 00 00 22 40 ", kMinusHalf = "00 00 00 00 00 00 E0 BF ",
                  kNaN = "EF BE AD DE 00 00 F8 FF ";

template <class Value>
std::string StoredHex(const Value& value) {
  return Hex(Store([&](CArchive& ar) { ar << value; })) + ' ';
}

template <class Value>
Value Loaded(const std::string& hex) {
  Value value;
  Load(Bytes(hex), [&](CArchive& ar) { ar >> value; });
  return value;
}

// The bytes load as a value that is stored as the same bytes; each shorter prefix raises.
template <class Value>
void ExpectLoads(const std::string& hex) {
  EXPECT_EQ(StoredHex(Loaded<Value>(hex)), hex);
  ExpectPrefixesRaise(Bytes(hex), [](CArchive& ar) {
    Value value;
    ar >> value;
  });
}

template <class Value>
void ExpectRecord(const Value& value, const std::string& hex) {
  EXPECT_EQ(StoredHex(value), hex);
  ExpectLoads<Value>(hex);
}

std::vector<int> Fields(const CFlaggedError& error) {
  return {error.GetFlag(), error.GetFlagErrorType(), error.ReportError(), error.GetCanClearError(),
          error.GetAllowEditingFlag()};
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
    Load(Bytes(none + k0 + k0), [&](CArchive& ar) { ar >> loaded; });
    EXPECT_EQ(loaded.len(), 0.0) << none;
  }
}

TEST(DocParamHelper, ArchiveHoldsTheUnitsAlone) {
  for (const int units : {-1, 0, 1, 3}) EXPECT_EQ(QFDocParamHelper(units).IsDocumentUnitsMm(), units == 0) << units;
  const std::string bytes = RecordBytes().NewClass("QFDocParamHelper", 1).Raw(-2).Get();
  QFDocParamHelper helper(-2);
  helper.SetDocParamReadStorageUnits(31.6f);
  helper.SetDocumentModifiedFlag(1);
  EXPECT_EQ(Hex(StoredObject(helper)), Hex(bytes));
  const auto loaded = LoadedObject<QFDocParamHelper>(bytes);
  EXPECT_EQ(Values(loaded->GetDocParamUnits(), loaded->GetDocParamReadStorageUnits(), loaded->IsDocumentModified()),
            "-2|38|0");
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

TEST(FlaggedError, RecordIsReadFromStorageVersion32002On) {
  const std::pair<float, bool> rows[] = {{6.0f, false}, {32.0019f, false}, {32.002f, true}, {0, true}};
  for (const auto& [units, record] : rows) {
    const TestDocument document(units);
    for (int schema = 1; schema <= 2; ++schema) {
      RecordBytes bytes;
      if (record) bytes.NewClass("CFlaggedError", schema);
      bytes.Dword(1);
      const bool typed = record && schema == 2;
      if (typed) bytes.Dword(FLAGGED_ERROR_NORMAL);
      bytes.Dword(0xCAFEBABE);
      Reader reader(bytes.Get());
      CFlaggedError error(17, FLAGGED_ERROR_STOCK);
      error.Serialize(reader.ar);
      DWORD next = 0;
      reader.ar >> next;
      EXPECT_EQ(next, 0xCAFEBABE) << units;
      EXPECT_EQ(Fields(error), (std::vector<int>{1, typed ? FLAGGED_ERROR_NORMAL : FLAGGED_ERROR_STOCK, 17, 0, 0}))
          << units << " schema " << schema;
    }
  }
}

TEST(FlaggedError, CopiesHaveAllFiveValuesAndTheArchiveTwoWhateverVersionWasRead) {
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  error.SetFlag();
  error.SetCanClearError(1);
  error.SetAllowEditingFlag(1);
  const CFlaggedError copy(error);
  CFlaggedError assigned(0, FLAGGED_ERROR_NORMAL);
  assigned = error;
  const std::unique_ptr<CFlaggedError> clone(error.Clone());
  TestDocument document(6.0f);
  const std::string bytes = StoredObject(error);
  EXPECT_EQ(Hex(bytes), Hex(RecordBytes().NewClass("CFlaggedError", 2).Class(1).Dword(1).Dword(1).Get()));
  document.units = 38.0f;
  const auto loaded = LoadedObject<CFlaggedError>(bytes);
  error = CFlaggedError(0, FLAGGED_ERROR_NORMAL);
  const std::vector<int> all = {1, FLAGGED_ERROR_STOCK, 17, 1, 1};
  EXPECT_EQ(Fields(copy), all);
  EXPECT_EQ(Fields(assigned), all);
  EXPECT_EQ(Fields(*clone), all);
  EXPECT_EQ(Fields(*loaded), (std::vector<int>{1, FLAGGED_ERROR_STOCK, -1, 0, 0}));
}

TEST(FlaggedError, DumpIsExact) {
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  const auto expect = [&](const std::string& type, const std::string& id, const std::string& flags) {
    EXPECT_EQ(Dumped([&](FILE* file) { error.DumpData(file); }),
              DumpBanner("CFlaggedError Start") + "\n m_eFlaggedErrorType : " + type + "\n m_bFlag : " + flags +
                  "\n m_iErrorStringID: " + id + "\n m_bCanClearError : " + flags + "\n m_bAllowEditing : " + flags +
                  DumpBanner("CFlaggedError End"));
  };
  expect("STOCK", "17", "NO");
  error.SetFlag();
  error.SetCanClearError(1);
  error.SetAllowEditingFlag(1);
  error.SetErrorString(-1);
  error.SetFlagErrorType(FLAGGED_ERROR_NORMAL);
  expect("NORMAL", "-1", "YES");
  error.SetFlagErrorType(FlaggedErrorEnum(2));
  expect("Nothing", "-1", "YES");
  error.DumpData(nullptr);
}
