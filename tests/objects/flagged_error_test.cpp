// The error flag: its record in old and new documents, and its copies.
#include <gtest/gtest.h>

#include "share/objects/flagged_error.h"
#include "tests/objects/loaded_object.h"
#include "tests/objects/test_document.h"

using namespace kvtest;

TEST(FlaggedError, HasItsExactBytesWhateverVersionWasRead) {
  const TestDocument document(6.0f);
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  error.SetFlag();
  error.SetCanClearError(1);
  EXPECT_EQ(Hex(StoredObject(error)), Hex(RecordBytes().NewClass("CFlaggedError", 2).Class(1).Dword(1).Dword(1).Get()));
}

TEST(FlaggedError, RecordIsReadFromStorageVersion32002On) {
  const struct {
    float units;
    bool record;
  } rows[] = {{6.0f, false}, {32.0019f, false}, {32.002f, true}, {0, true}};
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

TEST(FlaggedError, CopiesHaveAllFiveValuesAndTheArchiveTwo) {
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  error.SetFlag();
  error.SetCanClearError(1);
  error.SetAllowEditingFlag(1);
  const CFlaggedError copy(error);
  CFlaggedError assigned(0, FLAGGED_ERROR_NORMAL);
  assigned = error;
  const std::unique_ptr<CFlaggedError> clone(error.Clone());
  const auto loaded = LoadedObject<CFlaggedError>(StoredObject(error));
  error = CFlaggedError(0, FLAGGED_ERROR_NORMAL);
  const auto fields = [](const CFlaggedError& each) {
    return std::vector<int>{each.GetFlag(), each.GetFlagErrorType(), each.ReportError(), each.GetCanClearError(),
                            each.GetAllowEditingFlag()};
  };
  const std::vector<int> all = {1, FLAGGED_ERROR_STOCK, 17, 1, 1};
  EXPECT_EQ(fields(copy), all);
  EXPECT_EQ(fields(assigned), all);
  EXPECT_EQ(fields(*clone), all);
  EXPECT_EQ(fields(*loaded), (std::vector<int>{1, FLAGGED_ERROR_STOCK, -1, 0, 0}));
}
