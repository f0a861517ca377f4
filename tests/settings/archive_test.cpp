// A settings tree in a document's archive: exact bytes, the merge with the defaults, damaged archives; documents of
// older and newer releases, against a model of the merge.
#include "share/settings/settings_key.h"

#include <map>
#include <random>

#include "tests/archive_bytes.h"
#include "tests/objects/record_bytes.h"
#include "tests/registry_calls.h"

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
  const std::pair<float, bool> rows[] = {{0.0f, false}, {6.0f, false}, {6.0999f, false}, {6.1f, true},
                                         {6.2f, true},  {38.0f, true}, {-7.0f, true}};
  for (const auto& [units, record] : rows) EXPECT_EQ(HasBaseObjectRecord(units), record) << units;
}

namespace {

// The kind and the number of a value.
struct Datum {
  int kind = 0;  // 0 to kKinds - 1
  int number = 0;
  bool operator==(const Datum&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Datum& d) { return out << d.kind << ':' << d.number; }
};
constexpr unsigned kKinds = 5;
using Data = std::map<int, Datum>;  // by the number in the name; 0 is "MillFeatureCreationStyle"

CString NameOf(int i) {
  CString name;
  name.Format(_T("name%d"), i);
  return i == 0 ? CString(_T("MillFeatureCreationStyle")) : name;
}

void Declare(QFSettingsKey& key, const Data& data) {
  for (const auto& [i, datum] : data) {
    const int number = datum.number;
    CString text;
    text.Format(_T("%d"), number);
    switch (datum.kind) {
      case 0: key.AddValue(NameOf(i), number); break;
      case 1: key.AddValue(NameOf(i), double(number)); break;
      case 2: key.AddValue(NameOf(i), static_cast<unsigned long>(number)); break;
      case 3: key.AddValue(NameOf(i), text); break;
      default: key.AddValue(NameOf(i), CPoint(number, -number));
    }
  }
}

Data Found(const QFSettingsKey& key) {
  Data data;
  for (POSITION at = key.GetList().GetHeadPosition(); at;) {
    CObject* item = key.GetList().GetNext(at);
    const auto* named = DYNAMIC_DOWNCAST(QFSettingsValue, item);
    if (!named) continue;
    const std::string name = ToUtf8(named->GetName());
    Datum& datum = data[name[0] == 'M' ? 0 : std::stoi(name.substr(4))];
    if (auto* value = DYNAMIC_DOWNCAST(QFIntValue, item)) datum = {0, value->GetValue()};
    if (auto* value = DYNAMIC_DOWNCAST(QFDoubleValue, item)) datum = {1, int(value->GetValue())};
    if (auto* value = DYNAMIC_DOWNCAST(QFColorValue, item)) datum = {2, int(value->GetValue())};
    if (auto* value = DYNAMIC_DOWNCAST(QFStringValue, item)) datum = {3, std::stoi(ToUtf8(value->GetValue()))};
    if (auto* value = DYNAMIC_DOWNCAST(QFPointValue, item)) datum = {4, int(value->GetValue().x)};
  }
  return data;
}

// The values that a release declares in the root and in its group.
struct Release {
  Data root, group;
};
Release g_release;

class ModelGroup : public QFSettingsKey {
  DECLARE_SERIAL(ModelGroup)

 public:
  ModelGroup() : QFSettingsKey(_T("Group"), _T("")) { Declare(*this, g_release.group); }
};
IMPLEMENT_SERIAL(ModelGroup, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

class ModelRoot : public QFSettingsKey {
  DECLARE_SERIAL(ModelRoot)

 public:
  ModelRoot() : QFSettingsKey(_T("Root"), _T("")) {
    Declare(*this, g_release.root);
    AddKey(new ModelGroup);
  }
};
IMPLEMENT_SERIAL(ModelRoot, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

// The declared values; those that the document has come from there, with their kind there.
Data Merged(const Data& document, const Data& declared) {
  Data merged = declared;
  for (auto& [i, datum] : merged) {
    const auto found = document.find(i);
    if (found != document.end()) datum = found->second;
    if (found == document.end() && i == 0 && datum.kind == 0) datum.number = 0;
  }
  return merged;
}

}  // namespace

TEST(SettingsMergeModel, LoadsThousandDocumentsOfOtherReleases) {
  std::mt19937 random(kvtest::PrintedSeed());
  const auto draw = [&](int names) {
    Data data;
    for (int i = 0; i < names; ++i) {
      if (random() % 4)
        data[i] = {int(random() % 16 ? unsigned(i) % kKinds : random() % kKinds), int(random() % 100000)};
    }
    return data;
  };
  for (int document = 0; document < 1000; ++document) {
    SCOPED_TRACE(testing::Message() << "document " << document);
    const Release written = {draw(20), draw(30)}, read = {draw(30), draw(20)};
    g_release = written;
    ModelRoot stored;
    const std::string bytes = kvtest::StoredObject(stored);
    g_release = read;
    const auto loaded = kvtest::LoadedObject<ModelRoot>(bytes);
    ASSERT_EQ(Found(*loaded), Merged(written.root, read.root));
    const QFSettingsKey* group = loaded->GetKey(_T("Group"));
    ASSERT_NE(group, nullptr);
    ASSERT_EQ(Found(*group), Merged(written.group, read.group));
    ASSERT_EQ(loaded->GetList().GetCount(), LONGLONG(read.root.size()) + 1);
    // This release loses nothing when it saves and loads the document again.
    const auto again = kvtest::LoadedObject<ModelRoot>(kvtest::StoredObject(*loaded));
    ASSERT_EQ(Found(*again), Found(*loaded));
  }
}
