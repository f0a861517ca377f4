// Comparison and case of text, unit by unit. Conversions are in tests/framework/text_test.cpp.
#include "platform/text.h"

#include <gtest/gtest.h>

#include "platform/errors.h"

namespace {

TEST(Ordinal, ComparesUnitsOrTheirUpperCase) {
  const struct {
    LPCTSTR a, b;
    int exact, without_case;
  } rows[] = {
      {_T(""), _T(""), CSTR_EQUAL, CSTR_EQUAL},
      {_T("ab"), _T("AB"), CSTR_GREATER_THAN, CSTR_EQUAL},
      {_T("ab"), _T("ABC"), CSTR_GREATER_THAN, CSTR_LESS_THAN},
      {_T("_"), _T("a"), CSTR_LESS_THAN, CSTR_GREATER_THAN},
      {_T("Größe Ÿ жук"), _T("gRÖßE ÿ ЖУК"), CSTR_LESS_THAN, CSTR_EQUAL},
      {_T("ᾀⅷⓩｚ"), _T("ᾈⅧⓏＺ"), CSTR_LESS_THAN, CSTR_EQUAL},
      // No pairs of one lower-case and one upper-case letter.
      {_T("µ"), _T("Μ"), CSTR_LESS_THAN, CSTR_LESS_THAN},
      {_T("ı"), _T("I"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
      {_T("ſ"), _T("S"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
      {_T("ς"), _T("Σ"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
      {_T("ß"), _T("ẞ"), CSTR_LESS_THAN, CSTR_LESS_THAN},
      {_T("ǅ"), _T("Ǆ"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
      {_T("\u212A"), _T("k"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
      {_T("𐐨"), _T("𐐀"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
      {_T("\xFFFF"), _T("𐐀"), CSTR_GREATER_THAN, CSTR_GREATER_THAN},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(Text(row.a)));
    EXPECT_EQ(CompareStringOrdinal(row.a, -1, row.b, -1, FALSE), row.exact);
    EXPECT_EQ(CompareStringOrdinal(row.a, -1, row.b, -1, TRUE), row.without_case);
    const int a_units = int(Text(row.a).size()), b_units = int(Text(row.b).size());
    EXPECT_EQ(CompareStringOrdinal(row.a, a_units, row.b, b_units, TRUE), row.without_case);
  }
  EXPECT_EQ(CompareStringOrdinal(_T("a\0b"), 3, _T("A\0C"), 3, TRUE), CSTR_LESS_THAN) << "a NUL is a unit";
  EXPECT_EQ(CompareStringOrdinal(_T("ab"), 1, _T("AC"), 1, TRUE), CSTR_EQUAL);
  EXPECT_EQ(CompareStringOrdinal(nullptr, 0, _T("a"), -1, TRUE), 0);
}

TEST(Ordinal, IgnoresCaseForOneOnly) {
  for (const BOOL ignore_case : {2, -1}) {
    SetLastError(0);
    EXPECT_EQ(CompareStringOrdinal(_T("a"), -1, _T("a"), -1, ignore_case), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
  }
}

}  // namespace
