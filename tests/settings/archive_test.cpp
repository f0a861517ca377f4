// A settings tree in a document's archive: exact bytes, the merge with the defaults, damaged archives.
#include "share/settings/settings_key.h"
#include "tests/archive_bytes.h"

using kvtest::Bytes, kvtest::Hex;

namespace {

// A concrete key as the product declares them: the constructor adds the defaults.
class TestKey : public QFSettingsKey {
  DECLARE_SERIAL(TestKey)

 public:
  TestKey() : QFSettingsKey(_T("Test"), _T("Software\\Test")) {
    AddValue(_T("kept"), 1);
    AddValue(_T("other"), 2);
  }
};
IMPLEMENT_SERIAL(TestKey, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

class TestRoot : public QFSettingsKey {
  DECLARE_SERIAL(TestRoot)

 public:
  TestRoot() : QFSettingsKey(_T("Root"), _T("Software\\Test")) { AddKey(new TestKey); }
};
IMPLEMENT_SERIAL(TestRoot, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

std::string Saved(QFSettingsKey& key) {
  return kvtest::Store([&](CArchive& ar) { key.Serialize(ar); });
}
void Load(QFSettingsKey& key, const std::string& bytes) {
  kvtest::Load(bytes, [&](CArchive& ar) { key.Serialize(ar); });
}

// -1 for a missing name.
int IntOf(const QFSettingsKey& key, LPCTSTR name) {
  int value = -1;
  key.GetValue(name, value);
  return value;
}

// The record of a class that is new to the archive.
std::string NewClass(int schema, const std::string& name) {
  return std::string("\xFF\xFF", 2) + char(schema) + '\0' + char(name.size()) + '\0' + name;
}

}  // namespace

TEST(SettingsArchive, TreeHasItsExactBytes) {
  CArray<int, int> numbers;
  numbers.Add(-1);
  QFSettingsKey key(_T("not stored"), _T("not stored"));
  key.AddValue(_T("i"), -2);
  key.AddValue(_T("s"), CString(_T("AB")));
  key.AddValue(_T("d"), 1.0);
  key.AddValue(_T("c"), 0x010203ul);
  key.AddValue(_T("p"), CPoint(1, 2));
  key.AddValue(_T("r"), CRect(1, 2, 3, 4));
  key.AddValue(_T("t"), CTime(5));
  key.AddValue(_T("l"), 2.0L);
  key.AddValue(_T("a"), numbers);
  // Head first, so in reverse order. QFBaseObject has number 1; each value adds a class and an object, and holds a
  // class record of QFBaseObject.
  std::string expected = NewClass(2, "QFBaseObject") + Bytes("09 00");
  const auto expect = [&](const char* name, char letter, const char* datum) {
    expected += NewClass(1, name) + Bytes("01 80 FF FE FF 01") + letter + '\0' + Bytes(datum);
  };
  expect("QFIntArrayValue", 'a', "01 00 00 00 FF FF FF FF");
  expect("QFLongDoubleStrValue", 'l', "00 00 00 00 00 00 00 40");
  expect("QFTimeValue", 't', "0A 00 00 80 05 00 00 00 00 00 00 00");
  expect("QFRectValue", 'r', "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00");
  expect("QFPointValue", 'p', "01 00 00 00 02 00 00 00");
  expect("QFColorValue", 'c', "03 02 01 00");
  expect("QFDoubleValue", 'd', "00 00 00 00 00 00 F0 3F");
  expect("QFStringValue", 's', "FF FE FF 02 41 00 42 00");
  expect("QFIntValue", 'i', "FE FF FF FF");
  EXPECT_EQ(Hex(Saved(key)), Hex(expected));
}

TEST(SettingsArchive, LoadedTreeAndLoadedSubKeyAreSeenFromTheRoot) {
  TestRoot stored, root;
  stored.SetValue(_T("kept"), 10);
  const std::string bytes = Saved(stored);
  for (int search = 0; search < 2; ++search) EXPECT_EQ(IntOf(root, _T("kept")), 1);
  Load(root, bytes);
  for (int search = 0; search < 2; ++search) EXPECT_EQ(IntOf(root, _T("kept")), 10);
  EXPECT_EQ(Saved(root), bytes);
  QFSettingsKey* child = root.GetKey(_T("Test"));
  ASSERT_NE(child, nullptr) << "a concrete key's name comes from its constructor";
  TestKey other;
  other.SetValue(_T("kept"), 20);
  Load(*child, Saved(other));
  EXPECT_EQ(IntOf(root, _T("kept")), 20);
}

TEST(SettingsArchive, MergeKeepsItsOrder) {
  QFSettingsKey key;
  CObList loaded, defaults;
  loaded.AddTail(new QFIntValue(_T("b"), 20));
  loaded.AddTail(static_cast<CObject*>(nullptr));
  loaded.AddTail(new QFIntValue(_T("x"), 30));
  defaults.AddTail(new QFIntValue(_T("a"), 1));
  defaults.AddTail(new QFIntValue(_T("b"), 2));
  defaults.AddTail(new QFIntValue(_T("c"), 3));
  defaults.AddTail(new QFIntValue(_T("c"), 4));
  key.MergeContents(loaded, defaults);
  std::string names;
  for (POSITION at = loaded.GetHeadPosition(); at;) {
    auto* value = DYNAMIC_DOWNCAST(QFIntValue, loaded.GetNext(at));
    names += ToUtf8(value->GetName()) + std::to_string(value->GetValue()) + " ";
  }
  EXPECT_EQ(names, "c3 a1 b20 ") << "defaults move to the head one by one; of a duplicate name only the first";
  EXPECT_EQ(defaults.GetCount(), 2);
  key.ResetContent(loaded);
  key.ResetContent(defaults);
  EXPECT_TRUE(loaded.IsEmpty());
}

TEST(SettingsArchive, EveryTruncationThrowsAndLeavesAUsableKey) {
  TestRoot stored;
  const std::string bytes = Saved(stored);
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    TestRoot loaded;
    QFSettingsKey* former = loaded.GetKey(_T("Test"));
    EXPECT_THROW(Load(loaded, bytes.substr(0, length)), CArchiveException) << length;
    EXPECT_EQ(former->GetName(), _T("Test")) << "the defaults still exist";
    EXPECT_EQ(loaded.GetKey(_T("nothing")), nullptr);
  }
}

TEST(SettingsArchive, ItemWithTwoOwnersThrows) {
  QFSettingsKey key(_T("k"), _T(""));
  key.AddValue(_T("i"), 1);
  std::string bytes = Saved(key);
  const std::size_t count = NewClass(2, "QFBaseObject").size();
  ASSERT_EQ(bytes[count], 1);
  bytes[count] = 2;
  bytes += std::string("\x03\x00", 2);  // object number 3: the value again
  EXPECT_THROW(Load(key, bytes), CArchiveException);
}

TEST(SettingsArchive, OldStorageVersionsHaveNoBaseRecord) {
  const struct {
    float units;
    bool record;
  } rows[] = {{0.0f, false}, {6.0f, false}, {6.0999f, false}, {6.1f, true}, {6.2f, true}, {38.0f, true}, {-7.0f, true}};
  for (const auto& row : rows) EXPECT_EQ(HasBaseObjectRecord(row.units), row.record) << row.units;
}
