// Comparison and case of text, unit by unit. Conversions are in tests/framework/text_test.cpp.
#include "platform/text.h"

#include <gtest/gtest.h>

#include "tests/platform/status.h"

namespace {

TEST(Ordinal, ComparesUnitsOrTheirUpperCase) {
  const std::tuple<LPCTSTR, LPCTSTR, int, int> rows[] = {
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
  for (const auto& [a, b, exact, without_case] : rows) {
    SCOPED_TRACE(testing::PrintToString(Text(a)));
    EXPECT_EQ(CompareStringOrdinal(a, -1, b, -1, FALSE), exact);
    EXPECT_EQ(CompareStringOrdinal(a, -1, b, -1, TRUE), without_case);
    const int a_units = int(Text(a).size()), b_units = int(Text(b).size());
    EXPECT_EQ(CompareStringOrdinal(a, a_units, b, b_units, TRUE), without_case);
  }
  EXPECT_EQ(CompareStringOrdinal(_T("a\0b"), 3, _T("A\0C"), 3, TRUE), CSTR_LESS_THAN) << "a NUL is a unit";
  EXPECT_EQ(CompareStringOrdinal(_T("ab"), 1, _T("AC"), 1, TRUE), CSTR_EQUAL);
  EXPECT_EQ(CompareStringOrdinal(nullptr, 0, _T("a"), -1, TRUE), 0);
}

TEST(Ordinal, IgnoresCaseForOneOnly) {
  for (const BOOL ignore_case : {2, -1})
    EXPECT_EQ(StatusOf(CompareStringOrdinal(_T("a"), -1, _T("a"), -1, ignore_case) != 0), ERROR_INVALID_PARAMETER);
}

}  // namespace
