// A settings tree in a document's archive: exact bytes, and what a load does with older and newer documents.
#include "share/settings/settings_key.h"
#include "tests/archive_bytes.h"

using kvtest::Bytes, kvtest::Hex;

namespace {

// A concrete key as the product declares them: the constructor makes the defaults. What it declares depends on the
// class's age, which the tests choose.
class TestKey : public QFSettingsKey {
  DECLARE_SERIAL(TestKey)

 public:
  static int age;

  TestKey() : QFSettingsKey(_T("Test"), _T("Software\\Test")) {
    AddValue(_T("kept"), 1);
    if (age == 0) AddValue(_T("gone"), 2);
    if (age == 1) AddValue(_T("new"), 3);
    if (age == 1) AddValue(_T("MillFeatureCreationStyle"), 4);
  }
};
int TestKey::age = 0;
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

// -1 for a name that is not there.
int IntOf(const QFSettingsKey& key, LPCTSTR name) {
  int value = -1;
  key.GetValue(name, value);
  return value;
}

// A class record not met yet.
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
  // Head first, so the reverse of the order above. Numbers: QFBaseObject 1, then a class and an object for each value;
  // inside each value the class record of QFBaseObject, which is number 1.
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

TEST(SettingsArchive, DocumentWinsOverDefaults) {
  TestKey::age = 0;
  TestRoot stored;
  stored.SetValue(_T("kept"), 10);
  const std::string bytes = Saved(stored);
  TestRoot loaded;
  QFSettingsKey* child = loaded.GetKey(_T("Test"));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(IntOf(loaded, _T("kept")), 1);
  Load(loaded, bytes);
  EXPECT_EQ(IntOf(loaded, _T("kept")), 10) << "the index has to forget the defaults";
  EXPECT_EQ(IntOf(loaded, _T("gone")), 2);
  ASSERT_NE(loaded.GetKey(_T("Test")), nullptr) << "a concrete key's name comes from its constructor";
  EXPECT_NE(loaded.GetKey(_T("Test")), child);
  EXPECT_EQ(Saved(loaded), bytes);
}

TEST(SettingsArchive, OldDocumentGetsNewDefaultsAndLosesOldNames) {
  TestKey::age = 0;
  TestRoot old;
  old.SetValue(_T("kept"), 10);
  const std::string bytes = Saved(old);
  TestKey::age = 1;
  TestRoot loaded;
  EXPECT_EQ(IntOf(loaded, _T("MillFeatureCreationStyle")), 4);
  Load(loaded, bytes);
  EXPECT_EQ(IntOf(loaded, _T("kept")), 10);
  EXPECT_EQ(IntOf(loaded, _T("new")), 3);
  EXPECT_EQ(IntOf(loaded, _T("MillFeatureCreationStyle")), 0) << "the one named exception";
  EXPECT_EQ(IntOf(loaded, _T("gone")), -1);
  // It stays gone: a class that knows it finds its default in the next document.
  loaded.SetValue(_T("new"), 30);
  const std::string again = Saved(loaded);
  EXPECT_EQ(again.find(std::string("g\0o\0n\0e\0", 8)), std::string::npos);
  TestRoot reloaded;
  Load(reloaded, again);
  EXPECT_EQ(IntOf(reloaded, _T("new")), 30);
  TestKey::age = 0;
}

TEST(SettingsArchive, SubKeyLoadedAloneIsSeenFromTheRoot) {
  TestKey::age = 0;
  TestKey stored;
  stored.SetValue(_T("kept"), 10);
  TestRoot root;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(IntOf(root, _T("kept")), 1);
  Load(*root.GetKey(_T("Test")), Saved(stored));
  EXPECT_EQ(IntOf(root, _T("kept")), 10);
}

TEST(SettingsArchive, MergesByNameInOrder) {
  TestKey::age = 0;
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
  EXPECT_EQ(names, "c3 a1 b20 ") << "new ones to the head, one after the other; of a duplicate only the first";
  EXPECT_EQ(defaults.GetCount(), 2);
  key.ResetContent(loaded);
  key.ResetContent(defaults);
  EXPECT_TRUE(loaded.IsEmpty());
}

TEST(SettingsArchive, EveryTruncationRaisesAndLeavesAUsableKey) {
  TestKey::age = 0;
  TestRoot stored;
  const std::string bytes = Saved(stored);
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    TestRoot loaded;
    QFSettingsKey* former = loaded.GetKey(_T("Test"));
    EXPECT_THROW(Load(loaded, bytes.substr(0, length)), CArchiveException) << length;
    EXPECT_EQ(former->GetName(), _T("Test")) << "the defaults still live";
    EXPECT_EQ(loaded.GetKey(_T("nothing")), nullptr);
  }
}

TEST(SettingsArchive, ItemWithTwoOwnersRaises) {
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
