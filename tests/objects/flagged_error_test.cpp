// The error flag: its record, the gate for old documents, its copies.
#include <gtest/gtest.h>

#include <memory>

#include "share/objects/flagged_error.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"

using namespace kvtest;

TEST(FlaggedError, HasItsExactBytesInEveryStorageVersion) {
  for (const float units : {6.0f, 30.0f, 38.0f}) {
    const TestDocument document(units);
    CFlaggedError error(17, FLAGGED_ERROR_STOCK);
    error.SetFlag();
    error.SetCanClearError(1);
    EXPECT_EQ(StoredHex([&](CArchive& ar) { ar << &error; }),
              HexOf(RecordBytes().NewClass("CFlaggedError", 2).Class(1).Dword(1).Dword(1).Get()))
        << units;
  }
}

TEST(FlaggedError, RecordIsReadFromStorageVersion32002On) {
  const struct {
    float units;
    bool record;
  } rows[] = {{6.0f, false},   {30.0f, false}, {32.0f, false}, {32.0019f, false},
              {32.002f, true}, {38.0f, true},  {0, true}};
  for (const auto& row : rows) {
    const TestDocument document(row.units);
    for (int schema = 1; schema <= 2; ++schema) {
      RecordBytes bytes;
      if (row.record) bytes.NewClass("CFlaggedError", schema);
      bytes.Dword(1);
      const bool typed = row.record && schema == 2;
      if (typed) bytes.Dword(FLAGGED_ERROR_NORMAL);
      bytes.Dword(0xCAFEBABE);
      Reader reader(bytes.Get());
      CFlaggedError error(17, FLAGGED_ERROR_STOCK);
      error.Serialize(reader.ar);
      DWORD next = 0;
      reader.ar >> next;
      EXPECT_EQ(next, 0xCAFEBABE) << row.units;
      EXPECT_EQ(error.GetFlag(), 1);
      EXPECT_EQ(error.GetFlagErrorType(), typed ? FLAGGED_ERROR_NORMAL : FLAGGED_ERROR_STOCK)
          << row.units << " schema " << schema;
      EXPECT_EQ(error.ReportError(), 17);
    }
  }
}

TEST(FlaggedError, FlagAndTypeSurviveAndTheTextDoesNot) {
  const TestDocument document(38.0f);
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  error.SetFlag();
  error.SetAllowEditingFlag(1);
  const std::string bytes = Stored([&](CArchive& ar) { ar << &error; });
  Reader reader(bytes);
  CFlaggedError* read = nullptr;
  reader.ar >> read;
  const std::unique_ptr<CFlaggedError> loaded(read);
  EXPECT_EQ(loaded->GetFlag(), 1);
  EXPECT_EQ(loaded->GetFlagErrorType(), FLAGGED_ERROR_STOCK);
  EXPECT_EQ(loaded->ReportError(), -1);
  EXPECT_EQ(loaded->GetAllowEditingFlag(), 0);
}

TEST(FlaggedError, CopiesHaveAllFiveValues) {
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  error.SetFlag();
  error.SetCanClearError(1);
  error.SetAllowEditingFlag(1);
  const CFlaggedError copy(error);
  CFlaggedError assigned(0, FLAGGED_ERROR_NORMAL);
  assigned = error;
  const std::unique_ptr<CFlaggedError> clone(error.Clone());
  error = CFlaggedError(0, FLAGGED_ERROR_NORMAL);
  for (const CFlaggedError* each :
       {&copy, const_cast<const CFlaggedError*>(&assigned), const_cast<const CFlaggedError*>(clone.get())}) {
    EXPECT_EQ(each->GetFlag(), 1);
    EXPECT_EQ(each->GetFlagErrorType(), FLAGGED_ERROR_STOCK);
    EXPECT_EQ(each->ReportError(), 17);
    EXPECT_EQ(each->GetCanClearError(), 1);
    EXPECT_EQ(each->GetAllowEditingFlag(), 1);
  }
  EXPECT_EQ(error.GetFlag(), 0);
}
