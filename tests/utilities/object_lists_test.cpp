// Operations on whole lists: their results and the lists afterwards.
#include "share/utilities/object_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "share/objects/node_lists.h"
#include "share/objects/object.h"
#include "tests/scratch.h"

namespace {

int live_things = 0;

class Node : public QFObject {
 public:
  explicit Node(const CString& name = CString()) {
    ++live_things;
    ChangeName(name);
  }
  ~Node() override { --live_things; }
};

class Thing : public CObject {
 public:
  Thing() { ++live_things; }
  ~Thing() override { --live_things; }
};

// Objects by letter: 'a' to 'z' are nodes, 'A' to 'Z' are other objects, '.' is null.
class ObjectLists : public testing::Test {
 protected:
  CObject* Of(char letter) {
    if (letter == '.') return nullptr;
    std::unique_ptr<CObject>& object = m_pool[std::size_t(letter)];
    if (!object && letter >= 'a') object = std::make_unique<Node>(CString(TCHAR(letter)));
    if (!object) object = std::make_unique<Thing>();
    return object.get();
  }
  void Fill(CObList& list, const std::string& letters) {
    for (const char letter : letters) list.AddTail(Of(letter));
  }
  std::string Letters(const CObList& list) {
    std::string letters;
    for (POSITION at = list.GetHeadPosition(); at;) {
      const CObject* object = list.GetNext(at);
      const auto found =
          std::find_if(m_pool.begin(), m_pool.end(), [&](const auto& own) { return own.get() == object; });
      letters += object ? char(found - m_pool.begin()) : '.';
    }
    return letters;
  }

  std::vector<std::unique_ptr<CObject>> m_pool{128};
};

using SetOperation = LONGLONG (*)(CObList& a, CObList& b, CObList* result);

}  // namespace

TEST_F(ObjectLists, RandomListsAsByWalkingThem) {
  std::mt19937 random(kvtest::PrintedSeed());
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.";
  const auto text = [&] {
    std::string some(random() % (random() % 4 == 0 ? 3 : 90), ' ');  // small and large pointer sets
    for (char& letter : some) letter = letters[random() % (1 + random() % letters.size())];
    return some;
  };
  for (int round = 0; round < 400; ++round) {
    const std::string a = text(), b = text();
    CObList listA, listB, other;
    CObList* const result = std::array<CObList*, 4>{nullptr, &other, &listA, &listB}[random() % 4];
    const std::string old = result == &listA ? a : result == &listB ? b : text();
    std::string united = result ? old + a : a, common, found = a;
    const std::string searched = result == &listB ? united : b;
    for (const char letter : united)
      if (searched.find(letter) != std::string::npos) common += letter;
    for (const char letter : b) {
      if (united.find(letter) == std::string::npos) united += letter;
      if (a.empty() || (letter >= 'a' && found.find(letter) == std::string::npos)) found += letter;
    }
    const auto fill = [&] {
      for (CObList* list : {&listA, &listB, &other}) list->RemoveAll();
      Fill(other, old);
      Fill(listA, a);
      Fill(listB, b);
    };
    for (const auto& [operation, expected] :
         {std::pair<SetOperation, std::string>{CObList_Union, united}, {CObList_Xtion, common}}) {
      fill();
      const LONGLONG count = operation(listA, listB, result);
      ASSERT_EQ(Letters(result ? *result : listA), expected) << a << " with " << b << " into " << old;
      ASSERT_EQ(count, LONGLONG(expected.size()));
      ASSERT_TRUE(result == &listB || Letters(listB) == b) << b;
      ASSERT_TRUE(!result || result == &listA || Letters(listA) == a) << a;
      fill();
      operation(listA, listA, nullptr);
      FindAndAdd(listA, listA);
      ASSERT_EQ(Letters(listA), a) << "the same list twice";
    }
    FindAndAdd(listA, listB);
    ASSERT_EQ(Letters(listA), found) << a << " with " << b;
  }
}

TEST_F(ObjectLists, SearchesPurgesAndCopies) {
  CObList list;
  EXPECT_EQ(PurgeNullNodesFromList(list), 0);
  EXPECT_EQ(GetIndexOfObject(list, nullptr), -1);
  Fill(list, ".ab..a.");
  EXPECT_EQ(GetIndexOfObject(list, nullptr), 0);
  EXPECT_EQ(GetIndexOfObject(list, Of('a')), 1);
  EXPECT_EQ(GetIndexOfObject(list, Of('c')), -1);
  EXPECT_EQ(PurgeNullNodesFromList(list), 4);
  EXPECT_EQ(Letters(list), "aba");

  CObArray array;
  array.SetSize(7);
  EXPECT_EQ(CObList_To_CObArray(list, array), 3);
  EXPECT_EQ(array.GetCount(), 3);
  EXPECT_EQ(array[1], Of('b'));
  array.Add(nullptr);
  EXPECT_EQ(CObArray_To_CObList(array, list), 4);
  EXPECT_EQ(Letters(list), "aba.");
  array.RemoveAll();
  EXPECT_EQ(CObArray_To_CObList(array, list), 0);
  EXPECT_TRUE(list.IsEmpty());
}

TEST_F(ObjectLists, SortsByTheCellsAndSurvivesAComparisonThatThrows) {
  const CObListCompare byName = [](const void* left, const void* right) {
    const auto name = [](const void* cell) { return static_cast<Node*>(*static_cast<CObject* const*>(cell))->Name(); };
    return name(left).Compare(name(right));
  };
  CObList list;
  EXPECT_EQ(CObList_Sort(nullptr, byName) + CObList_Sort(&list, byName), 0);
  Fill(list, "bdacb");
  EXPECT_EQ(CObList_Sort(&list, nullptr), 0);
  EXPECT_THROW(CObList_Sort(&list, [](const void*, const void*) -> int { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_EQ(Letters(list), "bdacb");
  EXPECT_EQ(CObList_Sort(&list, byName), 1);
  EXPECT_EQ(Letters(list), "abbcd");
}

TEST(ObjectListDeletion, DeletesWhatTheListHolds) {
  // The destructor removes the last element and deletes it.
  class Owner : public Thing {
   public:
    explicit Owner(CObList& list) : m_list(list) {}
    ~Owner() override { delete m_list.RemoveTail(); }
    CObList& m_list;
  };
  const int before = live_things;
  CObList list;
  list.AddTail(new Owner(list));
  list.AddTail(static_cast<CObject*>(nullptr));
  list.AddTail(new Thing);
  list.AddTail(new Thing);
  EXPECT_EQ(DeleteAllElements_CObList(list), 4);
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(live_things, before);
  EXPECT_EQ(DeleteAllElements_CObList(list), 0);

  CObArray array;
  array.Add(new Thing);
  array.Add(nullptr);
  EXPECT_EQ(DeleteAllElements_CObArray(array), 2);
  EXPECT_EQ(array.GetCount(), 0);

  auto* onHeap = new CObList;
  onHeap->AddTail(new Thing);
  EXPECT_EQ(DeleteCObListWithCObject(onHeap), 1);
  EXPECT_EQ(DeleteCObListWithCObject(nullptr), 0);
  EXPECT_EQ(live_things, before);
}

TEST(ObjectListNames, FirstFreeNameOfACopy) {
  const std::pair<std::vector<const char*>, const char*> rows[] = {
      {{}, "Hole - Copy "},
      {{"Hole", "Hole - Copy", "Hole - Copy  ", "hole - copy "}, "Hole - Copy "},
      {{"Hole - Copy 3 ", "Hole - Copy ", "Hole - Copy ", "Hole - Copy 2 "}, "Hole - Copy 4 "},
      {{"Hole - Copy ", "Hole - Copy 3 "}, "Hole - Copy 2 "},
      // No copy gets one of these names.
      {{"Hole - Copy ", "Hole - Copy 2", "Hole - Copy 02 ", "Hole - Copy +2 ", "Hole - Copy  2 ", "Hole - Copy 2  "},
       "Hole - Copy 2 "},
      {{"Hole - Copy ", "Hole - Copy 99999999999999999999999 ", "Hole - Copy 1 ", "Hole - Copy 0 "}, "Hole - Copy 2 "},
  };
  for (const auto& [names, expected] : rows) {
    std::vector<std::unique_ptr<CObject>> objects;
    CObList list;
    for (const char* name : names) list.AddTail(objects.emplace_back(std::make_unique<Node>(name)).get());
    list.AddTail(static_cast<CObject*>(nullptr));
    list.AddTail(objects.emplace_back(std::make_unique<Thing>()).get());
    CString text = _T("Hole");
    ChangeNameForCopiedFeatAndOper(list, _T("Copy"), text, text);
    EXPECT_EQ(ToUtf8(text), expected) << names.size();
  }
}
