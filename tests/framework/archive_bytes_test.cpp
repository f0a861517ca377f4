// The archive's bytes, written by hand from the layout: storing gives exactly these bytes, and they load again.
#include <memory>
#include <vector>

#include "tests/framework/archive_fixture.h"

namespace {

using namespace kvtest;

// The class record of "TNode" with schema 1, the first time.
const std::string kNewNode = Bytes("FF FF 01 00 05 00") + "TNode";

// Expects that the values are stored as these bytes and load again.
template <class... Values>
void ExpectStored(const char* hex, const Values&... values) {
  const std::string bytes = Store([&](CArchive& ar) { (ar << ... << values); });
  EXPECT_EQ(Hex(bytes), hex);
  const auto read = [&](CArchive& ar) {
    const auto one = [&](const auto& wanted) {
      std::remove_cvref_t<decltype(wanted)> value{};
      ar >> value;
      EXPECT_EQ(value, wanted) << hex;
    };
    (one(values), ...);
  };
  Load(bytes, read);
}

TEST(ArchiveBytes, EachValueHasItsOwnWidth) {
  ExpectStored("A1", BYTE(0xA1));
  ExpectStored("78", 'x');
  ExpectStored("01 00", true, false);
  ExpectStored("FE FF", short(-2));
  ExpectStored("34 12", WORD(0x1234));
  ExpectStored("41 00", _T('A'));
  ExpectStored("FE FF FF FF", -2);
  ExpectStored("07 00 00 00", LONG(7));
  ExpectStored("78 56 34 82", DWORD(0x82345678));
  ExpectStored("FE FF FF FF FF FF FF FF", LONGLONG(-2));
  ExpectStored("01 00 00 00 00 00 00 80 28 00 00 00", ULONGLONG(1) << 63 | 1, 40u);
  ExpectStored("00 00 C0 3F 00 00 00 00 00 00 00 C0", 1.5f, -2.0);
}

TEST(ArchiveBytes, CountTakesSixBytesFrom0xFFFF) {
  const std::pair<ULONGLONG, const char*> rows[] = {{0, "00 00"},
                                                    {0xFFFE, "FE FF"},
                                                    {0xFFFF, "FF FF FF FF 00 00"},
                                                    {0x10000, "FF FF 00 00 01 00"},
                                                    {0xFFFFFFFE, "FF FF FE FF FF FF"}};
  for (const auto& row : rows) {
    const ULONGLONG count = row.first;
    const std::string bytes = Store([&](CArchive& ar) { ar.WriteCount(count); });
    EXPECT_EQ(Hex(bytes), row.second);
    Load(bytes, [&](CArchive& ar) { EXPECT_EQ(ar.ReadCount(), count); });
    ExpectEveryPrefixRaises(bytes, [](CArchive& ar) { ar.ReadCount(); });
  }
}

TEST(ArchiveBytes, ReferencesAreNullNewOrBackToAnyObjectEvenTheOneBeingRead) {
  TNode first(0x11), second(0x22);
  first.m_Text = "ab";
  second.m_pOther = &second;
  const std::string bytes = Store([&](CArchive& ar) {
    ar << static_cast<CObject*>(nullptr);
    ar << &first << &second << &first;
  });
  const std::string text = Bytes("FF FE FF 02 61 00 62 00"), noText = Bytes("FF FE FF 00");
  EXPECT_EQ(Hex(bytes), Hex(Bytes("00 00") +                                                 // null
                            kNewNode + Bytes("11 00 00 00") + text + Bytes("00 00 00 00") +  // class 1, object 2
                            Bytes("01 80 22 00 00 00") + noText + Bytes("00 00 03 00") +     // object 3
                            Bytes("02 00")));                                                // object 2
  const auto read = [](CArchive& ar) {
    TNode* none = reinterpret_cast<TNode*>(1);
    TNode *a = nullptr, *b = nullptr, *again = nullptr;
    ar >> none >> a;
    const std::unique_ptr<TNode> ownA(a);
    ar >> b;
    const std::unique_ptr<TNode> ownB(b);
    ar >> again;
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(again, a);
    EXPECT_EQ(a->m_Text, _T("ab"));
    EXPECT_EQ(b->m_Number, 0x22u);
    EXPECT_EQ(b->m_pOther, b);
  };
  Load(bytes, read);
  ExpectEveryPrefixRaises(bytes, read);
}

TEST(ArchiveBytes, MappedObjectTakesANumberAndNoBytes) {
  TNode outside(0), inside(1);
  inside.m_pOther = &outside;
  const std::string bytes = Store([&](CArchive& ar) {
    ar.MapObject(&outside);
    ar << &inside;
  });
  EXPECT_EQ(Hex(bytes), Hex(kNewNode + Bytes("01 00 00 00 FF FE FF 00 00 00 01 00")));
  Load(bytes, [&](CArchive& ar) {
    TNode* loaded = nullptr;
    ar.MapObject(&outside);
    ar >> loaded;
    EXPECT_EQ(loaded->m_pOther, &outside);
    delete loaded;
  });
}

// Numbers above 0x7FFE need long tags: the class has number 1, the first object 2, and the 32,765th object has the last
// short number.
TEST(ArchiveBytes, LongTagsBeginAboveNumber0x7FFE) {
  std::vector<std::unique_ptr<TLink>> links;
  for (int i = 0; i < 0x7FFF; ++i) links.push_back(std::make_unique<TLink>());
  TBase late;
  const std::string bytes = Store([&](CArchive& ar) {
    for (const auto& link : links) ar << link.get();  // numbers 2 to 0x8000
    ar << links[0x7FFC].get() << links[0x7FFD].get() << links[0x7FFE].get();
    ar.WriteClass(RUNTIME_CLASS(TBase));  // number 0x8001
    ar.WriteClass(RUNTIME_CLASS(TBase));
    ar.WriteClass(RUNTIME_CLASS(TLink));
    ar << &late;  // number 0x8002
    ar << &late;
  });
  const std::string firstLink = Bytes("FF FF 01 00 05 00") + "TLink" + Bytes("00 00");
  const std::string newBase = Bytes("FF FF 03 00 05 00") + "TBase", tail = bytes.substr(firstLink.size() + 0x7FFE * 4);
  EXPECT_EQ(bytes.substr(0, firstLink.size() + 4), firstLink + Bytes("01 80 00 00"));
  EXPECT_EQ(Hex(tail), Hex(Bytes("FE 7F") + Bytes("FF 7F FF 7F 00 00") + Bytes("FF 7F 00 80 00 00") + newBase +
                           Bytes("FF 7F 01 80 00 80") + Bytes("01 80") + Bytes("FF 7F 01 80 00 80") +
                           Bytes("FF 7F 01 80 00 80") + Bytes("00 00 00 00") + Bytes("FF 7F 02 80 00 00")));

  std::vector<std::unique_ptr<CObject>> owned;
  Load(bytes, [&](CArchive& ar) {
    for (int i = 0; i < 0x7FFF; ++i) owned.emplace_back(ar.ReadObject(RUNTIME_CLASS(TLink)));
    for (const int i : {0x7FFC, 0x7FFD, 0x7FFE}) EXPECT_EQ(ar.ReadObject(nullptr), owned[std::size_t(i)].get());
    EXPECT_EQ(ar.ReadClass(), RUNTIME_CLASS(TBase));
    EXPECT_EQ(ar.ReadClass(), RUNTIME_CLASS(TBase));
    EXPECT_EQ(ar.ReadClass(), RUNTIME_CLASS(TLink));
    owned.emplace_back(ar.ReadObject(RUNTIME_CLASS(TBase)));
    EXPECT_EQ(ar.ReadObject(nullptr), owned.back().get());
  });
}

// ---- texts: each form of the length record, wide and narrow

struct Form {
  std::size_t length;
  const char* wide;    // the length record of a wide text
  const char* narrow;  // the length record of a narrow text
};

const Form kForms[] = {{0, "FF FE FF 00", "00"},
                       {1, "FF FE FF 01", "01"},
                       {254, "FF FE FF FE", "FE"},
                       {255, "FF FE FF FF FF 00", "FF FF 00"},
                       {65'533, "FF FE FF FF FD FF", "FF FD FF"},
                       {65'534, "FF FE FF FF FF FF FE FF 00 00", "FF FF FF FE FF 00 00"},
                       {65'535, "FF FE FF FF FF FF FF FF 00 00", "FF FF FF FF FF 00 00"},
                       {70'000, "FF FE FF FF FF FF 70 11 01 00", "FF FF FF 70 11 01 00"}};

CString TextOf(std::size_t length) {
  CString text;
  LPTSTR units = text.GetBufferSetLength(int(length));
  for (std::size_t i = 0; i < length; ++i) units[i] = TCHAR(0x3B1 + i % 500);
  return text;
}

TEST(ArchiveStrings, LengthRecordsAreTheShortest) {
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
    const std::string narrow = Store([&](CArchive& ar) { AfxWriteStringLength(ar, form.length, /*wide=*/false); });
    EXPECT_EQ(Hex(narrow), form.narrow);
    Load(narrow + std::string(form.length, 'n'), read);
    EXPECT_TRUE(loaded == CString(_T('n'), int(form.length))) << form.length;
  }
  EXPECT_EQ(Hex(Store([](CArchive& ar) { AfxWriteStringLength(ar, 0xFFFFFFFF, /*wide=*/true); })),
            "FF FE FF FF FF FF FF FF FF FF FF FF FF FF 00 00 00 00");
}

TEST(ArchiveStrings, ReadsNarrowTextAsCodePage1252) {
  CString loaded;
  Load(Bytes("03 E4 80 9F"), [&](CArchive& ar) { ar >> loaded; });
  EXPECT_EQ(loaded, _T("\u00E4\u20AC\u0178"));
}

TEST(ArchiveStrings, LengthBeyondTheDataRaisesBeforeAnythingIsAllocated) {
  const std::pair<const char*, const char*> rows[] = {
      {"byte", "05 61 62"},
      {"word", "FF 00 01 61"},
      {"dword", "FF FF FF FE FF FF FF 61"},
      {"qword", "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 61"},
      {"wide byte", "FF FE FF 02 61 00 62"},
      {"wide dword", "FF FE FF FF FF FF FF FF FF 7F 61 00"},
      {"wide qword whose bytes overflow", "FF FE FF FF FF FF FF FF FF FF 01 00 00 00 00 00 00 80 61 00"},
      {"wide mark twice", "FF FE FF FF FE FF 01 61 00"},
  };
  for (const auto& [name, hex] : rows) {
    CString text = _T("kept");
    EXPECT_EQ(CauseOf(Bytes(hex), [&](CArchive& ar) { ar >> text; }), CArchiveException::endOfFile) << name;
    EXPECT_EQ(text, _T("kept")) << name;
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
