// CString: construction, sharing, parts, searching, changing, buffers, strings by number, and UTF-8.
// text_format_test.cpp tests Format.
#include "framework/text.h"

#include <gtest/gtest.h>

#include <vector>

#include "framework/block_pool.h"
#include "framework/resources.h"
#include "platform/paths.h"
#include "platform/resources.h"
#include "tests/folders.h"

void PrintTo(const CString& text, std::ostream* out) { *out << '"' << ToUtf8(text) << '"'; }

namespace {

TEST(Text, EmptyOnesAllocateNothing) {
  const std::size_t before = BlockPool::TakenByThisThread();
  CString a;
  CString b(_T(""));
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
  EXPECT_EQ(withNul.GetAt(3), 0);
  EXPECT_EQ(withNul.GetAt(4), 0);
  EXPECT_EQ(withNul.GetAt(-1), 0);
  EXPECT_THROW(CString(_T("x")).Preallocate(0x40000000), std::length_error);
}

TEST(Text, ComparesWithAndWithoutCase) {
  const struct {
    const TCHAR *a, *b;
    int exact, folded;
  } rows[] = {
      {_T("abc"), _T("abc"), 0, 0}, {_T("abc"), _T("ABC"), 1, 0},      {_T("ab"), _T("abc"), -1, -1},
      {_T("b"), _T("ABC"), 1, 1},   {_T("Größe"), _T("gRÖßE"), -1, 0}, {_T("Σ"), _T("ς"), -1, -1},
      {_T("I"), _T("ı"), -1, -1},   {_T("S"), _T("ſ"), -1, -1},        {_T("straße"), _T("STRASSE"), 1, 1},
      {_T("𐐀"), _T("𐐨"), -1, -1},   {_T(""), nullptr, 0, 0},           {_T("z"), nullptr, 1, 1},
      {_T("_"), _T("a"), -1, 1},
  };
  for (const auto& row : rows) {
    const CString a(row.a);
    EXPECT_EQ(a.Compare(row.b), row.exact) << ToUtf8(a);
    EXPECT_EQ(a.CompareNoCase(row.b), row.folded) << ToUtf8(a);
    EXPECT_EQ(a == row.b, row.exact == 0) << ToUtf8(a);
  }
}

TEST(Text, CutsWithinItsBounds) {
  const CString text(_T("Kestrova"));
  EXPECT_EQ(text.Mid(-2, 3), _T("Kes"));
  EXPECT_EQ(text.Mid(6, 2147483647), _T("va"));
  EXPECT_EQ(text.Mid(9), _T(""));
  EXPECT_EQ(text.Left(-1), _T(""));
  EXPECT_EQ(text.Left(99), text);
  EXPECT_EQ(text.Right(99), text);
  EXPECT_EQ(text.SpanIncluding(_T("seK")), _T("Kes"));
  EXPECT_EQ(text.SpanExcluding(_T("rt")), _T("Kes"));
  EXPECT_EQ(text.SpanExcluding(nullptr), text);
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
  EXPECT_EQ(text.Find(TCHAR('b'), 2), 4);
  EXPECT_EQ(text.Find(TCHAR('b'), 6), -1);
  EXPECT_EQ(text.Find(TCHAR('b'), -1), -1);
  EXPECT_EQ(text.Find(_T("abc"), 1), 3);
  EXPECT_EQ(text.Find(_T(""), 6), 6);
  EXPECT_EQ(text.Find(LPCTSTR(nullptr)), -1);
  EXPECT_EQ(text.ReverseFind('b'), 4);
  EXPECT_EQ(text.FindOneOf(_T("xcb")), 1);
}

TEST(Text, ReplaceRemoveInsertDeleteCountWhatTheyDid) {
  CString text(_T("a.b.c"));
  EXPECT_EQ(text.Replace(TCHAR('.'), TCHAR('-')), 2);
  EXPECT_EQ(text.Replace(_T("-"), _T(" to ")), 2);
  EXPECT_EQ(text, _T("a to b to c"));
  EXPECT_EQ(text.Replace(_T("TO"), _T("x")), 0);
  EXPECT_EQ(text.Replace(_T(""), _T("x")), 0);
  EXPECT_EQ(text.Replace(_T(" to "), nullptr), 2);
  EXPECT_EQ(text, _T("abc"));
  EXPECT_EQ(text.Insert(1, _T("--")), 5);
  EXPECT_EQ(text.Insert(99, TCHAR('!')), 6);
  EXPECT_EQ(text.Insert(-5, text), 12);
  EXPECT_EQ(text.Remove('-'), 4);
  EXPECT_EQ(text.Delete(2, 2), 6);
  EXPECT_EQ(text, _T("ababc!"));
  EXPECT_EQ(text.Delete(4, 99), 4);
  EXPECT_EQ(text.Delete(9), 4);
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
  EXPECT_EQ(CString(_T("  x ")).TrimLeft(), _T("x "));
  EXPECT_EQ(CString(_T("  x ")).TrimRight(), _T("  x"));
  EXPECT_EQ(CString(_T("&&File&")).TrimLeft(TCHAR('&')), _T("File&"));
  EXPECT_EQ(CString(_T("\\a\\b\\\\")).TrimRight(TCHAR('\\')), _T("\\a\\b"));
  EXPECT_EQ(CString(_T("[(x)]")).Trim(_T("[()]")), _T("x"));
  EXPECT_EQ(CString(_T("   ")).Trim(), _T(""));
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

}  // namespace
