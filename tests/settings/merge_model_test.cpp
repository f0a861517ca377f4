// Documents of older and newer releases, against a model of the merge with the defaults.
#include <map>
#include <random>

#include "share/settings/settings_key.h"
#include "tests/archive_bytes.h"
#include "tests/registry_calls.h"

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

std::string Stored(QFSettingsKey& tree) {
  return kvtest::Store([&](CArchive& ar) { ar.WriteObject(&tree); });
}
std::unique_ptr<ModelRoot> Loaded(const std::string& bytes) {
  ModelRoot* root = nullptr;
  kvtest::Load(bytes, [&](CArchive& ar) { ar >> root; });
  return std::unique_ptr<ModelRoot>(root);
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
    const std::string bytes = Stored(stored);
    g_release = read;
    const auto loaded = Loaded(bytes);
    ASSERT_EQ(Found(*loaded), Merged(written.root, read.root));
    const QFSettingsKey* group = loaded->GetKey(_T("Group"));
    ASSERT_NE(group, nullptr);
    ASSERT_EQ(Found(*group), Merged(written.group, read.group));
    ASSERT_EQ(loaded->GetList().GetCount(), LONGLONG(read.root.size()) + 1);
    // This release loses nothing when it saves and loads the document again.
    const auto again = Loaded(Stored(*loaded));
    ASSERT_EQ(Found(*again), Found(*loaded));
  }
}
