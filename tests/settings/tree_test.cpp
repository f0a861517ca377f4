// Shape, searches and typed access of a settings tree.
#include <gtest/gtest.h>

#include <random>

#include "share/settings/settings_key.h"
#include "tests/scratch.h"

namespace {

int IntOf(const QFSettingsKey& key, LPCTSTR name, int fallback = -1) {
  key.GetValue(name, fallback);
  return fallback;
}

// Makes the protected searches public.
class SearchableKey : public QFSettingsKey {
 public:
  using QFSettingsKey::DestroyList;
  using QFSettingsKey::FindSettingsValue;
  using QFSettingsKey::GetList;
  using QFSettingsKey::QFSettingsKey;
};

// The search by its definition: depth first, head first.
const QFSettingsValue* Walk(const SearchableKey& key, const CString& name) {
  for (POSITION at = key.GetList().GetHeadPosition(); at;) {
    CObject* item = key.GetList().GetNext(at);
    if (const auto* value = DYNAMIC_DOWNCAST(QFSettingsValue, item)) {
      if (value->GetName() == name) return value;
    } else if (const QFSettingsValue* found = Walk(*static_cast<const SearchableKey*>(item), name)) {
      return found;
    }
  }
  return nullptr;
}

}  // namespace

TEST(SettingsTree, LastDeclaredValueOfANameIsFoundAtAnyDepth) {
  QFSettingsKey root(_T("root"), _T(""));
  root.AddValue(_T("a"), 1);
  auto* early = new QFSettingsKey(_T("early"), _T(""));
  early->AddValue(_T("a"), 2);
  root.AddKey(early);
  EXPECT_EQ(IntOf(root, _T("a")), 2);
  root.AddValue(_T("a"), 3);
  for (int search = 0; search < 3; ++search) EXPECT_EQ(IntOf(root, _T("A")), -1) << "search " << search;
  root.SetValue(_T("a"), 30);
  EXPECT_EQ(IntOf(root, _T("a")), 30);
  EXPECT_EQ(IntOf(*early, _T("a")), 2);
}

TEST(SettingsTree, IndexFindsWhatTheWalkFindsThroughRandomChanges) {
  std::mt19937 random(kvtest::PrintedSeed());
  SearchableKey root(_T("root"), _T(""));
  std::vector<SearchableKey*> keys = {&root};
  for (int step = 0; step < 3000; ++step) {
    SearchableKey* key = keys[random() % keys.size()];
    CString name;
    name.Format(_T("n%d"), int(random() % 40));
    switch (random() % 8) {
      case 0:
        if (keys.size() < 40) {
          keys.push_back(new SearchableKey(name, _T("")));
          key->AddKey(keys.back());
        }
        break;
      case 1: key->AddValue(name, step); break;
      default: ASSERT_EQ(key->FindSettingsValue(name), Walk(*key, name)) << "step " << step;
    }
  }
}

TEST(SettingsTree, GetKeyFindsAtAnyDepthAndNeverItself) {
  QFSettingsKey root(_T("root"), _T(""));
  auto *middle = new QFSettingsKey(_T("middle"), _T("")), *deep = new QFSettingsKey(_T("deep"), _T(""));
  root.AddKey(middle);
  middle->AddKey(deep);
  for (int search = 0; search < 3; ++search) {
    EXPECT_EQ(root.GetKey(_T("deep")), deep);
    EXPECT_EQ(root.GetSettingsKey(_T("middle")), middle);
    EXPECT_EQ(root.GetKey(_T("root")), nullptr);
  }
  // A parent comes before the keys below it.
  auto* second = new QFSettingsKey(_T("deep"), _T(""));
  root.AddKey(second);
  EXPECT_EQ(root.GetKey(_T("deep")), second);
}

TEST(SettingsTree, RefusesCyclesAndSecondOwners) {
  QFSettingsKey root(_T("root"), _T("")), other(_T("other"), _T(""));
  auto* child = new QFSettingsKey(_T("child"), _T(""));
  for (QFSettingsKey* key : {child, &root, child, static_cast<QFSettingsKey*>(nullptr)}) root.AddKey(key);
  child->AddKey(&root);
  other.AddKey(child);
  EXPECT_EQ(other.GetKey(_T("child")), nullptr);
  EXPECT_TRUE(!root.GetKey(_T("root")) && !child->GetKey(_T("root")));
}

// The values "0", "1" and so on have one type each; the last one is an array.
template <class... Values>
void ExpectEachTypeFindsItsOwn(const Values&... stored) {
  constexpr int kArray = sizeof...(stored);
  const auto nameOf = [](int i) { return CString(TCHAR('0' + i), 1); };
  QFSettingsKey root(_T("root"), _T(""));
  CArray<int, int> numbers, read;
  numbers.Add(7);
  int added = 0;
  (root.AddValue(nameOf(added++), stored), ...);
  root.AddValue(nameOf(kArray), numbers);
  const auto check = [&](const auto& value, int type) {
    for (int i = 0; i <= kArray; ++i) {
      const std::remove_cvref_t<decltype(value)> none{};
      auto found = none;
      root.GetValue(nameOf(i), found);
      EXPECT_TRUE(found == (i == type ? value : none)) << "type " << type << ", value " << i;
      root.SetValue(nameOf(i), none);
      found = value;
      root.GetValue(nameOf(i), found);
      EXPECT_TRUE(found == (i == type ? none : value)) << "type " << type << ", value " << i;
      root.SetValue(nameOf(i), value);
      root.GetValue(nameOf(i), read);
      EXPECT_EQ(read.GetSize(), i == kArray) << "value " << i;
      read.RemoveAll();
      if (i != kArray) root.SetValue(nameOf(i), numbers);
    }
  };
  for (int round = 0; round < 2; ++round) {
    int type = 0;
    (check(stored, type++), ...);
  }
}

TEST(SettingsTree, EveryTypeReadsAndWritesOnlyItsOwnValues) {
  ExpectEachTypeFindsItsOwn(-5, 2.5, CString(_T("t")), 0xFFFFFFFFul, CPoint(1, 2), CRect(1, 2, 3, 4), CTime(1ll << 40),
                            0.25L);
}

TEST(SettingsTree, DestroyedContentIsNotFound) {
  SearchableKey root(_T("root"), _T(""));
  root.AddValue(_T("a"), 1);
  for (int search = 0; search < 2; ++search) EXPECT_EQ(IntOf(root, _T("a")), 1);
  root.DestroyList();
  for (int search = 0; search < 2; ++search) EXPECT_EQ(IntOf(root, _T("a")), -1);
}
