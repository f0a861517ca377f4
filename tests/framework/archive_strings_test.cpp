// Texts in an archive: each form of the length record, wide and narrow, and wrong lengths.
#include <string>

#include "tests/framework/archive_fixture.h"

namespace {

using namespace kvtest;

struct Form {
  std::size_t length;
  const char* wide;    // the length record of a wide text
  const char* narrow;  // the length record of a narrow text
};

const Form kForms[] = {
    {0, "FF FE FF 00", "00"},
    {1, "FF FE FF 01", "01"},
    {254, "FF FE FF FE", "FE"},
    {255, "FF FE FF FF FF 00", "FF FF 00"},
    {65'533, "FF FE FF FF FD FF", "FF FD FF"},
    {65'534, "FF FE FF FF FF FF FE FF 00 00", "FF FF FF FE FF 00 00"},
    {65'535, "FF FE FF FF FF FF FF FF 00 00", "FF FF FF FF FF 00 00"},
    {70'000, "FF FE FF FF FF FF 70 11 01 00", "FF FF FF 70 11 01 00"},
};

CString TextOf(std::size_t length) {
  CString text;
  LPTSTR units = text.GetBufferSetLength(int(length));
  for (std::size_t i = 0; i < length; ++i) units[i] = TCHAR(0x3B1 + i % 500);
  return text;
}

TEST(ArchiveStrings, StoresWideWithTheShortestLengthRecord) {
  for (const Form& form : kForms) {
    const CString text = TextOf(form.length);
    const std::string bytes = Store([&](CArchive& ar) { ar << text; });
    const std::string record = Bytes(form.wide);
    EXPECT_EQ(Hex(bytes.substr(0, record.size())), form.wide);
    const std::string units(reinterpret_cast<const char*>(text.GetString()), form.length * 2);
    EXPECT_TRUE(bytes.substr(record.size()) == units) << form.length;
    CString loaded = _T("before");
    const auto read = [&](CArchive& ar) { ar >> loaded; };
    Load(bytes, read);
    EXPECT_TRUE(loaded == text) << form.length;
    if (form.length <= 255) ExpectEveryPrefixRaises(bytes, read);  // longer texts would take too long
  }
  EXPECT_EQ(Hex(Store([](CArchive& ar) { AfxWriteStringLength(ar, 0xFFFFFFFF, /*wide=*/true); })),
            "FF FE FF FF FF FF FF FF FF FF FF FF FF FF 00 00 00 00");
}

TEST(ArchiveStrings, ReadsNarrowTextsOfEachForm) {
  for (const Form& form : kForms) {
    const std::string record = Store([&](CArchive& ar) { AfxWriteStringLength(ar, form.length, /*wide=*/false); });
    EXPECT_EQ(Hex(record), form.narrow);
    CString loaded = _T("before");
    Load(record + std::string(form.length, 'n'), [&](CArchive& ar) { ar >> loaded; });
    EXPECT_TRUE(loaded == CString(_T('n'), int(form.length))) << form.length;
  }
}

TEST(ArchiveStrings, ReadsNarrowTextAsCodePage1252) {
  CString loaded;
  Load(Bytes("04 31 2E 31 30"), [&](CArchive& ar) { ar >> loaded; });
  EXPECT_EQ(loaded, _T("1.10"));
  Load(Bytes("03 E4 80 9F"), [&](CArchive& ar) { ar >> loaded; });
  EXPECT_EQ(loaded, _T("\u00E4\u20AC\u0178"));
}

TEST(ArchiveStrings, KeepsTerminatorsAndLoneSurrogates) {
  const TCHAR units[] = {u'a', 0, 0xD800, u'b'};
  const std::string bytes = Store([&](CArchive& ar) { ar << CString(units, 4); });
  EXPECT_EQ(Hex(bytes), "FF FE FF 04 61 00 00 00 00 D8 62 00");
  CString loaded;
  Load(bytes, [&](CArchive& ar) { ar >> loaded; });
  EXPECT_EQ(loaded.View(), std::u16string_view(units, 4));
}

TEST(ArchiveStrings, LengthBeyondTheDataRaisesBeforeAnythingIsAllocated) {
  const struct {
    const char* name;
    const char* hex;
  } rows[] = {
      {"byte", "05 61 62"},
      {"word", "FF 00 01 61"},
      {"dword", "FF FF FF FE FF FF FF 61"},
      {"qword", "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 61"},
      {"wide byte", "FF FE FF 02 61 00 62"},
      {"wide dword", "FF FE FF FF FF FF FF FF FF 7F 61 00"},
      {"wide qword whose bytes overflow", "FF FE FF FF FF FF FF FF FF FF 01 00 00 00 00 00 00 80 61 00"},
      {"wide mark twice", "FF FE FF FF FE FF 01 61 00"},
  };
  for (const auto& row : rows) {
    CString text = _T("kept");
    EXPECT_EQ(CauseOf(Bytes(row.hex), [&](CArchive& ar) { ar >> text; }), CArchiveException::endOfFile) << row.name;
    EXPECT_EQ(text, _T("kept")) << row.name;
  }
}

TEST(ArchiveStrings, ReadIfEqualTakesAllOfAnEqualTextOrNothing) {
  const struct {
    const char* bytes;  // a WORD comes before, which fills the buffer, and after
    LPCTSTR known;
    bool equal;
  } rows[] = {
      {"FF FE FF 02 41 00 42 00 34 12", _T("AB"), true},
      {"FF FE FF 00 34 12", _T(""), true},
      {"FF FE FF 02 41 00 42 00 34 12", _T("AC"), false},
      {"FF FE FF 02 41 00 42 00 34 12", _T("A"), false},
      {"FF FE FF 02 41 00 42 00 34 12", _T("ABC"), false},
      {"FF FE FF 00 34 12", _T("AB"), false},
      {"02 41 42 34 12", _T("AB"), false},  // narrow
  };
  for (const auto& row : rows) {
    for (const bool asBytes : {false, true}) {
      Load(Bytes("00 00") + Bytes(row.bytes), [&](CArchive& ar) {
        CString text = row.known;
        BYTE stored[10] = {};
        const std::size_t count = CArchive::StoredBytes(text, stored, sizeof stored);
        WORD next = 0;
        ar >> next;
        EXPECT_EQ(asBytes ? ar.ReadIfNext(stored, count) : ar.ReadIfEqual(text), row.equal) << row.bytes;
        if (!row.equal) ar >> text;
        ar >> next;
        EXPECT_EQ(next, 0x1234) << row.bytes;
      });
    }
  }
  BYTE stored[600] = {};
  EXPECT_EQ(CArchive::StoredBytes(CString(_T("ABCD")), stored, 11), 0u) << "no room";
  EXPECT_EQ(CArchive::StoredBytes(CString(_T('x'), 254), stored, sizeof stored), 512u);
  EXPECT_EQ(CArchive::StoredBytes(CString(_T('x'), 255), stored, sizeof stored), 0u) << "another length record";
  Load(Bytes("00 00 FF FE FF 01 41"), [](CArchive& ar) {
    WORD ahead = 0;
    ar >> ahead;
    EXPECT_FALSE(ar.ReadIfEqual(CString(_T("A")))) << "half a character is missing";
  });
}

}  // namespace
