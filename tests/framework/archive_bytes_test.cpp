// The archive's bytes, written by hand from the layout: what is stored is exactly these, and these load again.
#include <memory>
#include <string>
#include <vector>

#include "tests/framework/archive_fixture.h"

namespace {

using namespace kvtest;

// "TNode", schema 1, not met before.
const std::string kNewNode = Bytes("FF FF 01 00 05 00") + "TNode";

TEST(ArchiveBytes, StoresEachValueInItsOwnWidth) {
  struct Row {
    const char* name;
    std::function<void(CArchive&)> write;
    const char* hex;
  };
  const Row rows[] = {
      {"byte", [](CArchive& ar) { ar << BYTE(0xA1); }, "A1"},
      {"char", [](CArchive& ar) { ar << 'x'; }, "78"},
      {"bool", [](CArchive& ar) { ar << true << false; }, "01 00"},
      {"short", [](CArchive& ar) { ar << short(-2); }, "FE FF"},
      {"word", [](CArchive& ar) { ar << WORD(0x1234); }, "34 12"},
      {"character", [](CArchive& ar) { ar << _T('A'); }, "41 00"},
      {"int", [](CArchive& ar) { ar << -2; }, "FE FF FF FF"},
      {"long", [](CArchive& ar) { ar << LONG(7); }, "07 00 00 00"},
      {"dword", [](CArchive& ar) { ar << DWORD(0x12345678); }, "78 56 34 12"},
      {"longlong", [](CArchive& ar) { ar << LONGLONG(-2); }, "FE FF FF FF FF FF FF FF"},
      {"ulonglong", [](CArchive& ar) { ar << ULONGLONG(1) << 40u; }, "01 00 00 00 00 00 00 00 28 00 00 00"},
      {"float", [](CArchive& ar) { ar << 1.5f; }, "00 00 C0 3F"},
      {"double", [](CArchive& ar) { ar << -2.0; }, "00 00 00 00 00 00 00 C0"},
  };
  for (const Row& row : rows) EXPECT_EQ(Hex(Store(row.write)), row.hex) << row.name;
}

TEST(ArchiveBytes, LoadsEachValueAsItWasStored) {
  const auto write = [](CArchive& ar) {
    ar << BYTE(1) << true << WORD(0xFFFF) << -5 << DWORD(0x80000000) << LONGLONG(-1) << 0.1 << 2.5f << _T('z');
  };
  Load(Store(write), [](CArchive& ar) {
    BYTE byte = 0;
    bool flag = false;
    WORD word = 0;
    int number = 0;
    DWORD dword = 0;
    LONGLONG large = 0;
    double real = 0;
    float single = 0;
    TCHAR unit = 0;
    ar >> byte >> flag >> word >> number >> dword >> large >> real >> single >> unit;
    EXPECT_EQ(byte, 1);
    EXPECT_TRUE(flag);
    EXPECT_EQ(word, 0xFFFF);
    EXPECT_EQ(number, -5);
    EXPECT_EQ(dword, 0x80000000);
    EXPECT_EQ(large, -1);
    EXPECT_EQ(real, 0.1);
    EXPECT_EQ(single, 2.5f);
    EXPECT_EQ(unit, _T('z'));
    EXPECT_EQ(ar.GetBytesLeft(), 0u);
  });
}

TEST(ArchiveBytes, CountTakesSixBytesFrom0xFFFF) {
  const struct {
    ULONGLONG count;
    const char* hex;
  } rows[] = {{0, "00 00"},
              {0xFFFE, "FE FF"},
              {0xFFFF, "FF FF FF FF 00 00"},
              {0x10000, "FF FF 00 00 01 00"},
              {0xFFFFFFFE, "FF FF FE FF FF FF"}};
  for (const auto& row : rows) {
    const std::string bytes = Store([&](CArchive& ar) { ar.WriteCount(row.count); });
    EXPECT_EQ(Hex(bytes), row.hex);
    Load(bytes, [&](CArchive& ar) { EXPECT_EQ(ar.ReadCount(), row.count); });
    ExpectEveryPrefixRaises(bytes, [](CArchive& ar) { ar.ReadCount(); });
  }
}

TEST(ArchiveBytes, ReferencesNullNewSecondAndBack) {
  TNode first(0x11), second(0x22);
  first.m_Text = "ab";
  const std::string bytes = Store([&](CArchive& ar) {
    ar << static_cast<CObject*>(nullptr);
    ar << &first << &second << &first;
  });
  const std::string text = Bytes("FF FE FF 02 61 00 62 00"), noText = Bytes("FF FE FF 00");
  EXPECT_EQ(Hex(bytes), Hex(Bytes("00 00") +                                                 // null
                            kNewNode + Bytes("11 00 00 00") + text + Bytes("00 00 00 00") +  // class 1, object 2
                            Bytes("01 80 22 00 00 00") + noText + Bytes("00 00 00 00") +     // object 3
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
  };
  Load(bytes, read);
  ExpectEveryPrefixRaises(bytes, read);
}

TEST(ArchiveBytes, ObjectIsEnteredAheadOfItsBytesSoCyclesClose) {
  TNode node(1);
  node.m_pOther = &node;
  const std::string bytes = Store([&](CArchive& ar) { ar << &node; });
  EXPECT_EQ(Hex(bytes), Hex(kNewNode + Bytes("01 00 00 00 FF FE FF 00 00 00 02 00")));
  const auto read = [](CArchive& ar) {
    TNode* loaded = nullptr;
    ar >> loaded;
    EXPECT_EQ(loaded->m_pOther, loaded);
    delete loaded;
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

// Numbers above 0x7FFE take the long tags: the class is 1, the first object 2, the last one with a short number the
// 32,765th.
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
  const std::string newBase = Bytes("FF FF 03 00 05 00") + "TBase";
  const std::string tail = bytes.substr(firstLink.size() + 0x7FFE * 4);
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

// The same bytes whatever the buffer: values and texts across its end.
TEST(ArchiveBytes, BufferSizeDoesNotShow) {
  TNode node(5);
  node.m_Text = CString(_T('q'), 300);
  const auto write = [&](CArchive& ar) {
    for (int i = 0; i < 100; ++i) ar << BYTE(i) << i << double(i);
    ar << &node;
  };
  const std::string bytes = Store(write);
  EXPECT_EQ(Store(write, 128), bytes);
  EXPECT_EQ(Store(write, 131), bytes);
  Load(
      bytes,
      [](CArchive& ar) {
        for (int i = 0; i < 100; ++i) {
          BYTE byte = 0;
          int number = 0;
          double real = 0;
          ar >> byte >> number >> real;
          ASSERT_EQ(number, i);
          ASSERT_EQ(real, i);
        }
        const std::unique_ptr<CObject> loaded(ar.ReadObject(RUNTIME_CLASS(TNode)));
        EXPECT_EQ(static_cast<TNode&>(*loaded).m_Text.GetLength(), 300);
      },
      131);
}

}  // namespace
