// Shape, searches and typed access of a settings tree.
#include <gtest/gtest.h>

#include <random>

#include "share/settings/settings_key.h"

namespace {

int IntOf(const QFSettingsKey& key, LPCTSTR name, int fallback = -1) {
  key.GetValue(name, fallback);
  return fallback;
}

// Gives tests the searches that the product's classes use.
class OpenKey : public QFSettingsKey {
 public:
  using QFSettingsKey::DestroyList;
  using QFSettingsKey::FindSettingsValue;
  using QFSettingsKey::GetList;
  using QFSettingsKey::QFSettingsKey;
};

// The search as it is defined: depth first, head first.
const QFSettingsValue* Walk(const OpenKey& key, const CString& name) {
  for (POSITION at = key.GetList().GetHeadPosition(); at;) {
    CObject* item = key.GetList().GetNext(at);
    if (const auto* value = DYNAMIC_DOWNCAST(QFSettingsValue, item)) {
      if (value->GetName() == name) return value;
    } else if (const QFSettingsValue* found = Walk(*static_cast<const OpenKey*>(item), name)) {
      return found;
    }
  }
  return nullptr;
}

}  // namespace

TEST(SettingsTree, FindsTheDuplicateDeclaredLast) {
  QFSettingsKey root(_T("root"), _T(""));
  root.AddValue(_T("a"), 1);
  root.AddValue(_T("a"), 2);
  for (int search = 0; search < 3; ++search) EXPECT_EQ(IntOf(root, _T("a")), 2) << "search " << search;
}

TEST(SettingsTree, LaterSubKeyShadowsTheKeysOwnValue) {
  QFSettingsKey root(_T("root"), _T(""));
  root.AddValue(_T("a"), 1);
  auto* early = new QFSettingsKey(_T("early"), _T(""));
  early->AddValue(_T("a"), 2);
  root.AddKey(early);
  EXPECT_EQ(IntOf(root, _T("a")), 2);
  root.AddValue(_T("a"), 3);
  EXPECT_EQ(IntOf(root, _T("a")), 3) << "declared after the sub-key, so ahead of it";
  auto* late = new QFSettingsKey(_T("late"), _T(""));
  root.AddKey(late);
  EXPECT_EQ(IntOf(root, _T("a")), 3);
  // The index of the root has to notice a change two levels below.
  EXPECT_EQ(IntOf(root, _T("a")), 3);
  auto* deep = new QFSettingsKey(_T("deep"), _T(""));
  late->AddKey(deep);
  deep->AddValue(_T("a"), 4);
  for (int search = 0; search < 3; ++search) EXPECT_EQ(IntOf(root, _T("a")), 4) << "search " << search;
  root.SetValue(_T("a"), 40);
  EXPECT_EQ(IntOf(*deep, _T("a")), 40);
  EXPECT_EQ(IntOf(*early, _T("a")), 2);
}

TEST(SettingsTree, IndexFindsWhatTheWalkFindsThroughRandomChanges) {
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  OpenKey root(_T("root"), _T(""));
  std::vector<OpenKey*> keys = {&root};
  for (int step = 0; step < 3000; ++step) {
    OpenKey* key = keys[random() % keys.size()];
    CString name;
    name.Format(_T("n%d"), int(random() % 40));
    switch (random() % 8) {
      case 0:
        if (keys.size() < 40) {
          keys.push_back(new OpenKey(name, _T("")));
          key->AddKey(keys.back());
        }
        break;
      case 1: key->AddValue(name, step); break;
      default: ASSERT_EQ(key->FindSettingsValue(name), Walk(*key, name)) << "seed " << seed << ", step " << step;
    }
  }
}

TEST(SettingsTree, NamesCompareWithCase) {
  QFSettingsKey root(_T("root"), _T(""));
  root.AddValue(_T("Name"), 1);
  EXPECT_EQ(IntOf(root, _T("name")), -1);
  EXPECT_EQ(IntOf(root, _T("Name")), 1);
}

TEST(SettingsTree, GetKeyFindsAtAnyDepthAndNeverItself) {
  QFSettingsKey root(_T("root"), _T(""));
  auto* middle = new QFSettingsKey(_T("middle"), _T(""));
  auto* deep = new QFSettingsKey(_T("deep"), _T(""));
  root.AddKey(middle);
  middle->AddKey(deep);
  for (int search = 0; search < 3; ++search) {
    EXPECT_EQ(root.GetKey(_T("deep")), deep);
    EXPECT_EQ(root.GetSettingsKey(_T("middle")), middle);
    EXPECT_EQ(root.GetKey(_T("root")), nullptr);
  }
  // The first key of a name in the walk: the parent stands ahead of what is below it.
  auto* second = new QFSettingsKey(_T("deep"), _T(""));
  root.AddKey(second);
  EXPECT_EQ(root.GetKey(_T("deep")), second);
}

TEST(SettingsTree, RefusesCirclesAndSecondOwners) {
  QFSettingsKey root(_T("root"), _T(""));
  QFSettingsKey other(_T("other"), _T(""));
  auto* child = new QFSettingsKey(_T("child"), _T(""));
  root.AddKey(child);
  root.AddKey(&root);
  child->AddKey(&root);
  other.AddKey(child);
  root.AddKey(child);
  root.AddKey(nullptr);
  EXPECT_EQ(other.GetKey(_T("child")), nullptr);
  EXPECT_EQ(root.GetKey(_T("root")), nullptr);
  EXPECT_EQ(child->GetKey(_T("root")), nullptr);
}

TEST(SettingsTree, EveryTypeComesBackAndOtherTypesAreLeftAlone) {
  QFSettingsKey root(_T("root"), _T(""));
  CArray<int, int> numbers;
  numbers.Add(7);
  root.AddValue(_T("int"), -5);
  root.AddValue(_T("double"), 2.5);
  root.AddValue(_T("text"), CString(_T("t")));
  root.AddValue(_T("color"), 0xFFFFFFFFul);
  root.AddValue(_T("point"), CPoint(1, 2));
  root.AddValue(_T("rect"), CRect(1, 2, 3, 4));
  root.AddValue(_T("time"), CTime(LONGLONG(1) << 40));
  root.AddValue(_T("long double"), 0.25L);
  root.AddValue(_T("array"), numbers);

  struct Read {
    int matches;
    bool operator()(const QFSettingsKey& key, LPCTSTR name) {
      int i = 99;
      double d = 99;
      CString s = _T("99");
      unsigned long c = 99;
      CPoint p(99, 99);
      CRect r(99, 99, 99, 99);
      CTime t(99);
      long double l = 99;
      CArray<int, int> a;
      key.GetValue(name, i);
      key.GetValue(name, d);
      key.GetValue(name, s);
      key.GetValue(name, c);
      key.GetValue(name, p);
      key.GetValue(name, r);
      key.GetValue(name, t);
      key.GetValue(name, l);
      key.GetValue(name, a);
      const bool hits[] = {i == -5,
                           d == 2.5,
                           s == _T("t"),
                           c == 0xFFFFFFFFul,
                           p == CPoint(1, 2),
                           r == CRect(1, 2, 3, 4),
                           t.GetTime() == LONGLONG(1) << 40,
                           l == 0.25L,
                           a.GetSize() == 1};
      const bool untouched[] = {
          i == 99,           d == 99, s == _T("99"), c == 99, p == CPoint(99, 99), r == CRect(99, 99, 99, 99),
          t.GetTime() == 99, l == 99, a.IsEmpty()};
      matches = 0;
      for (int n = 0; n < 9; ++n) {
        matches += hits[n];
        if (!hits[n] && !untouched[n]) return false;
      }
      return true;
    }
  };
  for (LPCTSTR name : {_T("int"), _T("double"), _T("text"), _T("color"), _T("point"), _T("rect"), _T("time"),
                       _T("long double"), _T("array")}) {
    Read read;
    EXPECT_TRUE(read(root, name)) << ToUtf8(CString(name));
    EXPECT_EQ(read.matches, 1) << ToUtf8(CString(name));
    // Setting with every other type changes nothing either.
    if (CString(name) != _T("int")) root.SetValue(name, 1);
    if (CString(name) != _T("text")) root.SetValue(name, CString(_T("x")));
    EXPECT_TRUE(read(root, name)) << ToUtf8(CString(name));
    EXPECT_EQ(read.matches, 1) << ToUtf8(CString(name));
  }
}

TEST(SettingsTree, DestroyedContentIsNotFound) {
  OpenKey root(_T("root"), _T(""));
  root.AddValue(_T("a"), 1);
  EXPECT_EQ(IntOf(root, _T("a")), 1);
  EXPECT_EQ(IntOf(root, _T("a")), 1);
  root.DestroyList();
  EXPECT_EQ(IntOf(root, _T("a")), -1);
  EXPECT_EQ(IntOf(root, _T("a")), -1);
}
