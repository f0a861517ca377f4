// CString::Format: numbers as the C library prints them, text in UTF-16 units, and conversions that do not fit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "framework/text.h"

namespace {

template <class... Arguments>
std::string Formatted(const TCHAR* format, const Arguments&... arguments) {
  CString text;
  text.Format(format, arguments...);
  return ToUtf8(text);
}

// The C library's output; the tests run in its "C" locale.
template <class... Arguments>
std::string Printed(const std::string& format, Arguments... arguments) {
  char text[600];
  std::snprintf(text, sizeof text, format.c_str(), arguments...);
  return text;
}

// Compares each value, shape and letter with the C library.
template <class Number>
void ExpectAsPrinted(std::string_view letters, std::initializer_list<const char*> shapes,
                     std::initializer_list<Number> values) {
  for (const char* shape : shapes) {
    for (const char letter : letters) {
      const std::string format = std::string("%") + shape + letter;
      for (const Number value : values)
        EXPECT_EQ(Formatted(CString(format.c_str()), value), Printed(format, value)) << format << " of " << value;
    }
  }
}

// Skips flags that C leaves undefined for a letter, and %#g, where whole numbers may have fewer zeros in C.
TEST(TextFormat, NumbersLookAsTheCLibraryPrintsThem) {
  const auto whole = {0, 1, -1, 42, -123456, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
  ExpectAsPrinted("diuoxX", {"", "5", "-5", "05", ".0", ".3", "8.3", "-8.3"}, whole);
  ExpectAsPrinted("di", {"+", " ", "+5", "-+8", "+.6"}, whole);
  ExpectAsPrinted("oxX", {"#", "#010"}, whole);
  const auto real = {0.0, -0.0, 1.0, 0.1, -2.5, 1e10, 123456.789, 1e-7, 5e-324, 1.7976931348623157e308, HUGE_VAL};
  ExpectAsPrinted("fFeEgGaA", {"", "5", "-5", "05", "+", " ", "+5", "-+8", ".0", ".3", "8.3", "-8.3", "+.6"}, real);
  ExpectAsPrinted("fFeEaA", {"#", "#010"}, real);
}

TEST(TextFormat, ConversionsOfTheProductWork) {
  const CString wide(_T("Größe"));
  EXPECT_EQ(Formatted(_T("%s-%d.%s"), _T("report"), 7, wide), "report-7.Größe");
  EXPECT_EQ(Formatted(_T("[%7s|%-7s|%.2s|%5.1s]"), wide, wide, wide, wide), "[  Größe|Größe  |Gr|    G]");
  EXPECT_EQ(Formatted(_T("%S %hs %ls"), "schmäl", "a", _T("b")), "schmäl a b");
  EXPECT_EQ(Formatted(_T("%I64d %I64u %I32d %lld %ld %hd %Iu %zu"), LONGLONG(-1) << 40, ~ULONGLONG(0), -1, 5LL, 6L,
                      short(-7), std::size_t(8), std::size_t(9)),
            "-1099511627776 18446744073709551615 -1 5 6 -7 8 9");
  EXPECT_EQ(Formatted(_T("%*d|%-*d|%*d|%.*f|%.*f"), 4, 7, 4, 7, -4, 7, 2, 1.0, -1, 1.5),
            "   7|7   |7   |1.00|1.500000");
  EXPECT_EQ(Formatted(_T("%c%c%C%5c|"), TCHAR(_T('ä')), 'b', 99, TCHAR('d')), "äbc    d|");
  EXPECT_EQ(Formatted(_T("%s"), LPCTSTR(nullptr)), "(null)");
  EXPECT_EQ(Formatted(_T("%p"), reinterpret_cast<void*>(0xABC)), "0000000000000ABC");
  EXPECT_EQ(Formatted(_T("%x %d %d %u %x"), BYTE(200), BYTE(200), 0xFFFFFFFFu, -1, short(-1)),
            "c8 200 -1 4294967295 ffffffff");
}

TEST(TextFormat, WhatDoesNotFitIsLeftStanding) {
  EXPECT_EQ(Formatted(_T("%d %s %f"), 1.5, 2, _T("x")), "%d %s %f");
  EXPECT_EQ(Formatted(_T("%d and %d"), 1), "1 and %d");
  EXPECT_EQ(Formatted(_T("%d%s"), _T("text"), _T("next")), "%dnext") << "the others keep their places";
  EXPECT_EQ(Formatted(_T("%y %5"), 1), "%y %5");
  EXPECT_EQ(Formatted(_T("50%")), "50%");
  EXPECT_EQ(Formatted(_T("%*d"), _T("x"), 5), "%*d");
  EXPECT_EQ(Formatted(nullptr, 1), "");
  EXPECT_EQ(Formatted(_T("%99999999999d"), 1).size(), std::size_t(1) << 20) << "a width is bounded";
}

TEST(TextFormat, MayUseTheTextThatItReplaces) {
  CString text(_T("a"));
  text.Format(_T("%s%s"), text, text);
  text.AppendFormat(_T("-%s-%d"), text, 1);
  EXPECT_EQ(text, _T("aa-aa-1"));
  text.Format(text, 1);
  EXPECT_EQ(text, _T("aa-aa-1"));
}

}  // namespace
