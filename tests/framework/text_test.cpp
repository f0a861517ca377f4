// CString: construction, sharing, parts, searching, changing, buffers, strings by number, and UTF-8; and Format:
// numbers as the C library prints them, text in UTF-16 units, and conversions that do not fit.
#include "framework/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "framework/block_pool.h"
#include "framework/resources.h"
#include "platform/paths.h"
#include "platform/resources.h"
#include "tests/folders.h"
#include "tests/values.h"

using kvtest::Values;

void PrintTo(const CString& text, std::ostream* out) { *out << '"' << ToUtf8(text) << '"'; }

namespace {

TEST(Text, EmptyOnesAllocateNothing) {
  const std::size_t before = BlockPool::TakenByThisThread();
  CString a, b(_T(""));
  CString c(a);
  c = b + a;
  c += _T("");
  c.MakeUpper().MakeLower().Trim().MakeReverse();
  const CString d = c.Mid(3, 4) + c.Left(2);
  EXPECT_TRUE(d.IsEmpty() && FromUtf8("").IsEmpty() && CString(LPCTSTR(nullptr)).IsEmpty());
  EXPECT_EQ(BlockPool::TakenByThisThread(), before);
  EXPECT_EQ(*d.GetString(), 0);
}

TEST(Text, CopiesShareUntilOneChanges) {
  const CString original(_T("shared"));
  const std::size_t before = BlockPool::TakenByThisThread();
  CString copy = original, second;
  second = copy;
  EXPECT_EQ(second.GetString(), original.GetString());
  EXPECT_EQ(original.Mid(0).GetString(), original.GetString());
  EXPECT_EQ(BlockPool::TakenByThisThread(), before);
  copy.SetAt(0, 'S');
  EXPECT_EQ(copy, _T("Shared"));
  EXPECT_EQ(original, _T("shared"));
  EXPECT_EQ(second.GetString(), original.GetString());
}

TEST(Text, IsBuiltFromAnything) {
  EXPECT_EQ(CString(_T("abcdef"), 3), _T("abc"));
  EXPECT_EQ(CString(_T("abc"), -1), _T(""));
  EXPECT_EQ(CString(TCHAR('x'), -1), _T(""));
  EXPECT_EQ(CString("Größe"), _T("Größe"));
  const CString withNul(_T("a\0b"), 3);
  EXPECT_EQ(withNul.GetLength(), 3);
  for (const int at : {3, 4, -1}) EXPECT_EQ(withNul.GetAt(at), 0) << at;
  EXPECT_THROW(CString(_T("x")).Preallocate(0x40000000), std::length_error);
}

TEST(Text, ComparesWithAndWithoutCase) {
  const std::tuple<LPCTSTR, LPCTSTR, int, int> rows[] = {
      {_T("abc"), _T("abc"), 0, 0}, {_T("abc"), _T("ABC"), 1, 0},      {_T("ab"), _T("abc"), -1, -1},
      {_T("b"), _T("ABC"), 1, 1},   {_T("Größe"), _T("gRÖßE"), -1, 0}, {_T("Σ"), _T("ς"), -1, -1},
      {_T("I"), _T("ı"), -1, -1},   {_T("S"), _T("ſ"), -1, -1},        {_T("straße"), _T("STRASSE"), 1, 1},
      {_T("𐐀"), _T("𐐨"), -1, -1},   {_T(""), nullptr, 0, 0},           {_T("z"), nullptr, 1, 1},
      {_T("_"), _T("a"), -1, 1},
  };
  for (const auto& [text, b, exact, folded] : rows) {
    const CString a(text);
    EXPECT_EQ(a.Compare(b), exact) << ToUtf8(a);
    EXPECT_EQ(a.CompareNoCase(b), folded) << ToUtf8(a);
    EXPECT_EQ(a == b, exact == 0) << ToUtf8(a);
  }
}

TEST(Text, CutsWithinItsBounds) {
  const CString text(_T("Kestrova"));
  EXPECT_EQ(Values(text.Mid(-2, 3), text.Mid(6, 2147483647), text.Mid(9), text.Left(-1)), "Kes|va||");
  EXPECT_EQ(Values(text.Left(99), text.Right(99)), "Kestrova|Kestrova");
  EXPECT_EQ(Values(text.SpanIncluding(_T("seK")), text.SpanExcluding(_T("rt")), text.SpanExcluding(nullptr)),
            "Kes|Kes|Kestrova");
}

TEST(Text, TokenizeSkipsEmptyPieces) {
  const CString text(_T(",,a;b,,c,"));
  int at = 0;
  for (const TCHAR* wanted : {_T("a"), _T("b"), _T("c"), _T("")}) EXPECT_EQ(text.Tokenize(_T(",;"), at), wanted);
  EXPECT_EQ(at, -1);
  EXPECT_EQ(text.Tokenize(_T(","), at), _T("")) << "after the end";
}

TEST(Text, SearchGivesAPositionOrMinusOne) {
  const CString text(_T("abcabc"));
  EXPECT_EQ(Values(text.Find(TCHAR('b'), 2), text.Find(TCHAR('b'), 6), text.Find(TCHAR('b'), -1)), "4|-1|-1");
  EXPECT_EQ(Values(text.Find(_T("abc"), 1), text.Find(_T(""), 6), text.Find(LPCTSTR(nullptr))), "3|6|-1");
  EXPECT_EQ(Values(text.ReverseFind('b'), text.FindOneOf(_T("xcb"))), "4|1");
}

TEST(Text, ReplaceRemoveInsertDeleteCountWhatTheyDid) {
  CString text(_T("a.b.c"));
  using Counts = std::vector<int>;
  EXPECT_EQ((Counts{text.Replace(TCHAR('.'), TCHAR('-')), text.Replace(_T("-"), _T(" to "))}), (Counts{2, 2}));
  EXPECT_EQ(text, _T("a to b to c"));
  EXPECT_EQ((Counts{text.Replace(_T("TO"), _T("x")), text.Replace(_T(""), _T("x"))}), (Counts{0, 0}));
  EXPECT_EQ(text.Replace(_T(" to "), nullptr), 2);
  EXPECT_EQ(text, _T("abc"));
  EXPECT_EQ((Counts{text.Insert(1, _T("--")), text.Insert(99, TCHAR('!')), text.Insert(-5, text)}), (Counts{5, 6, 12}));
  EXPECT_EQ((Counts{text.Remove('-'), text.Delete(2, 2)}), (Counts{4, 6}));
  EXPECT_EQ(text, _T("ababc!"));
  EXPECT_EQ((Counts{text.Delete(4, 99), text.Delete(9)}), (Counts{4, 4}));
  text = _T("aaa");
  EXPECT_EQ(text.Replace(_T("aa"), text), 1);
  EXPECT_EQ(text, _T("aaaa"));
}

TEST(Text, MayBeChangedByAPartOfItself) {
  CString text(_T("0123456789"));
  text += text;
  EXPECT_EQ(text, _T("01234567890123456789"));
  text = text.GetString() + 15;
  EXPECT_EQ(text, _T("56789"));
  text.Append(text.GetString() + 1, 2);
  for (int i = 0; i < 100; ++i) text.Append(text, 1);
  EXPECT_EQ(text, CString(_T("5678967")) + CString(TCHAR('5'), 100));
}

TEST(Text, TrimsBlanksCharactersAndSets) {
  EXPECT_EQ(CString(_T(" \t\r\n\u00A0\u3000x y\u2003\v ")).Trim(), _T("x y"));
  EXPECT_EQ(Values(CString(_T("  x ")).TrimLeft(), CString(_T("  x ")).TrimRight(), CString(_T("   ")).Trim()),
            "x |  x|");
  EXPECT_EQ(Values(CString(_T("&&File&")).TrimLeft(TCHAR('&')), CString(_T("[(x)]")).Trim(_T("[()]"))), "File&|x");
  EXPECT_EQ(CString(_T("\\a\\b\\\\")).TrimRight(TCHAR('\\')), _T("\\a\\b"));
}

TEST(Text, CaseChangesKeepTheLength) {
  EXPECT_EQ(CString(_T("größe straße жук ıſςÿ 𐐨")).MakeUpper(), _T("GRÖßE STRAßE ЖУК ıſςŸ 𐐨"));
  EXPECT_EQ(CString(_T("GRÖSSE İẞ ЖУК Ÿ 𐐀")).MakeLower(), _T("grösse İẞ жук ÿ 𐐀"));
  EXPECT_EQ(CString(_T("abc")).MakeReverse(), _T("cba"));
}

TEST(Text, BuffersAreTheTextsOwn) {
  CString text(_T("abc"));
  const CString copy = text;
  std::copy_n(_T("fghijklm"), 8, text.GetBuffer(10) + 2);
  text.ReleaseBuffer(4);
  EXPECT_EQ(text, _T("abfg"));
  EXPECT_EQ(copy, _T("abc"));
  std::copy_n(_T("xy"), 3, text.GetBuffer());
  text.ReleaseBuffer();
  EXPECT_EQ(text, _T("xy"));
  std::copy_n(_T("12345"), 5, text.GetBufferSetLength(5));
  text.ReleaseBuffer(99999);
  EXPECT_EQ(text.Left(5), _T("12345")) << "as long as the buffer is";
  text.GetBufferSetLength(0);
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_EQ(CString().GetBuffer(0)[0], 0);
}

TEST(Text, StringsByNumberComeFromTheChainsLastLibraryFirst) {
  const Text path = ProductPathFromSystem(kvtest::LibraryFile("lang/English/KVRESu.DLL").string());
  const HMODULE english = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(english, nullptr);
  CString text(_T("before"));
  EXPECT_FALSE(text.LoadString(2555));
  EXPECT_TRUE(text.IsEmpty()) << "no library is registered";
  {
    CDynLinkLibrary first(nullptr, english);
    CDynLinkLibrary without(nullptr);
    EXPECT_TRUE(text.LoadString(2555));
    EXPECT_EQ(text, _T("Error"));
    EXPECT_TRUE(text.LoadString(english, 60113));
    EXPECT_EQ(text, _T("&Kestrova"));
    EXPECT_FALSE(text.LoadString(2));
    EXPECT_FALSE(text.LoadString(nullptr, 2555));
  }
  EXPECT_FALSE(text.LoadString(2555));
  EXPECT_TRUE(FreeLibrary(english));
}

TEST(Text, Utf8BorderNeverFails) {
  using Rows = std::vector<std::pair<std::string, Text>>;
  const Rows both = {
      {"", _T("")}, {"Größe €", _T("Größe €")}, {"\xF0\x9F\x94\xA7", _T("🔧")}, {{"a\0b", 3}, {_T('a'), 0, _T('b')}}};
  for (const auto& [bytes, text] : both) {
    EXPECT_EQ(FromUtf8(bytes).View(), text);
    EXPECT_EQ(ToUtf8(TextView(text)), bytes);
  }
  const Rows bad = {
      {"a\xFFz", _T("a\uFFFDz")}, {"\xED\xA0\x80!", _T("\uFFFD\uFFFD\uFFFD!")}, {"\xF0\x9F\x94", _T("\uFFFD")}};
  for (const auto& [bytes, text] : bad) {
    EXPECT_EQ(FromUtf8(bytes).View(), text);
    EXPECT_EQ(CString(bytes.c_str()).View(), text);
  }
  EXPECT_EQ(ToUtf8(TextView(Text{_T('a'), 0xD83D, _T('b')})), "a\uFFFDb") << "half a character";
  EXPECT_EQ(ToUtf8(_T("\u00FC")) + ToUtf8(LPCTSTR(nullptr)), "\u00FC");
}

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
