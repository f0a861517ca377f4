// The collections: order, positions, empty lists, and their bytes in an archive.
#include <memory>
#include <vector>

#include "framework/array.h"
#include "framework/list.h"
#include "framework/ob_array.h"
#include "tests/framework/archive_fixture.h"

namespace {

using namespace kvtest;

std::string NumberOf(int value) { return std::to_string(value); }
std::string NumberOf(const CObject* node) { return std::to_string(static_cast<const TNode*>(node)->m_Number); }

// The elements as text in list order; also counts them from the tail.
template <class List>
std::string Walk(const List& list) {
  std::string forward;
  for (POSITION at = list.GetHeadPosition(); at;) forward += NumberOf(list.GetNext(at)) + " ";
  LONGLONG count = 0;
  for (POSITION at = list.GetTailPosition(); at; ++count) list.GetPrev(at);
  EXPECT_EQ(count, list.GetCount());
  return forward;
}

class ObListTest : public testing::Test {
 protected:
  TNode one_{1}, two_{2}, three_{3};
  CObList list_;
};

TEST_F(ObListTest, AddsAtBothEndsAndInBetween) {
  const POSITION two = list_.AddTail(&two_);
  list_.AddHead(&one_);
  list_.AddTail(&three_);
  list_.InsertBefore(two, &three_);
  list_.InsertAfter(two, &one_);
  EXPECT_EQ(Walk(list_), "1 3 2 1 3 ");
  const POSITION head = list_.InsertBefore(nullptr, nullptr);
  EXPECT_EQ(head, list_.GetHeadPosition());
  const POSITION tail = list_.InsertAfter(nullptr, &two_);
  EXPECT_EQ(tail, list_.GetTailPosition());
  EXPECT_EQ(list_.GetAt(list_.FindIndex(6)), &two_);
}

TEST_F(ObListTest, RemovesAnywhereAndCanBeFilledAgain) {
  for (int round = 0; round < 2; ++round) {
    for (TNode* node : {&one_, &two_, &three_, &two_}) list_.AddTail(node);
    list_.RemoveAt(list_.Find(&two_));
    EXPECT_EQ(Walk(list_), "1 3 2 ");
    EXPECT_EQ(list_.RemoveHead(), &one_);
    EXPECT_EQ(list_.RemoveTail(), &two_);
    EXPECT_EQ(list_.RemoveTail(), &three_);
    EXPECT_TRUE(!list_.RemoveTail() && !list_.RemoveHead() && !list_.GetHeadPosition());
  }
}

TEST_F(ObListTest, FindStartsBehindThePosition) {
  for (TNode* node : {&one_, &two_, &one_}) list_.AddTail(node);
  const POSITION first = list_.Find(&one_);
  EXPECT_EQ(first, list_.GetHeadPosition());
  EXPECT_EQ(list_.Find(&one_, first), list_.GetTailPosition());
  EXPECT_EQ(list_.Find(&one_, list_.GetTailPosition()), nullptr);
  EXPECT_EQ(list_.Find(&three_), nullptr);
  EXPECT_EQ(list_.FindIndex(-1), nullptr);
}

TEST_F(ObListTest, TakesAnotherListInItsOrder) {
  CObList other(1);
  other.AddTail(&two_);
  other.AddTail(&three_);
  list_.AddTail(&one_);
  list_.AddHead(&other);
  EXPECT_EQ(Walk(list_), "2 3 1 ");
  list_.AddTail(&list_);
  EXPECT_EQ(Walk(list_), "2 3 1 2 3 1 ");
  list_.RemoveAll();
  list_.AddHead(&list_);
  EXPECT_TRUE(list_.IsEmpty());
}

TEST_F(ObListTest, StoresCountAndReferences) {
  EXPECT_EQ(Hex(Store([&](CArchive& ar) { list_.Serialize(ar); })), "00 00");
  TLink link;
  for (CObject* object : {static_cast<CObject*>(&link), static_cast<CObject*>(nullptr), static_cast<CObject*>(&link)})
    list_.AddTail(object);
  const std::string bytes = Store([&](CArchive& ar) { list_.Serialize(ar); });
  EXPECT_EQ(Hex(bytes), "03 00 FF FF 01 00 05 00 54 4C 69 6E 6B 00 00 00 00 02 00");
  CObList loaded;
  Load(bytes, [&](CArchive& ar) { loaded.Serialize(ar); });
  ASSERT_EQ(loaded.GetCount(), 3);
  EXPECT_EQ(loaded.GetHead(), loaded.GetTail());
  delete loaded.GetHead();
}

// Outside ReadObject the caller owns the objects that were read before a failure.
TEST_F(ObListTest, HoldsWhatWasReadAheadOfAFailure) {
  const std::string bytes = Bytes("03 00 FF FF 01 00 05 00 54 4C 69 6E 6B 00 00 02 00 09 00");
  EXPECT_EQ(CauseOf(bytes, [&](CArchive& ar) { list_.Serialize(ar); }), CArchiveException::badIndex);
  ASSERT_EQ(list_.GetCount(), 2);
  EXPECT_EQ(list_.GetHead(), list_.GetTail());
  delete list_.GetHead();
}

TEST(ObArray, GrowsInsertsRemovesAndRefusesWrongIndices) {
  TNode one(1), two(2);
  CObArray array;
  EXPECT_EQ(array.Add(&one), 0);
  array.SetAtGrow(3, &two);
  EXPECT_EQ(array.GetCount(), 4);
  EXPECT_EQ(array[1], nullptr);
  array.InsertAt(1, &two, 2);
  EXPECT_EQ(array[2], &two);
  array.RemoveAt(0, 3);
  EXPECT_EQ(array.GetCount(), 3);
  EXPECT_EQ(array.Append(array), 3);
  EXPECT_EQ(array[5], &two);
  EXPECT_THROW(array.GetAt(6), std::out_of_range);
  EXPECT_THROW(array.GetAt(-1), std::out_of_range);
  EXPECT_THROW(array.RemoveAt(5, 2), std::out_of_range);
  EXPECT_THROW(array.SetSize(-1), std::out_of_range);
}

TEST(Array, StoresRawElementsBehindACount) {
  CArray<int, int> array;
  EXPECT_EQ(Hex(Store([&](CArchive& ar) { array.Serialize(ar); })), "00 00");
  for (const int value : {1, -1, 0x01020304}) array.Add(value);
  const std::string bytes = Store([&](CArchive& ar) { array.Serialize(ar); });
  EXPECT_EQ(Hex(bytes), "03 00 01 00 00 00 FF FF FF FF 04 03 02 01");
  CArray<int, int> loaded;
  Load(bytes, [&](CArchive& ar) { loaded.Serialize(ar); });
  ASSERT_EQ(loaded.GetSize(), 3);
  EXPECT_EQ(loaded[2], 0x01020304);
  ExpectEveryPrefixRaises(bytes, [](CArchive& ar) { CArray<int, int>().Serialize(ar); });
}

TEST(Array, StoresTextsOneByOne) {
  CArray<CString> array;
  array.Add(_T("a"));
  array.Add(_T(""));
  const std::string bytes = Store([&](CArchive& ar) { array.Serialize(ar); });
  EXPECT_EQ(Hex(bytes), "02 00 FF FE FF 01 61 00 FF FE FF 00");
  CArray<CString> loaded;
  Load(bytes, [&](CArchive& ar) { loaded.Serialize(ar); });
  EXPECT_EQ(loaded[0], _T("a"));
}

TEST(Array, TakesItsOwnElementsAsArguments) {
  CArray<CString> array;
  array.Add(_T("x"));
  array.SetAtGrow(40, array[0]);
  array.InsertAt(0, array[40], 3);
  array.Append(array);
  EXPECT_EQ(array.GetCount(), 88);
  EXPECT_EQ(array[2] + array[87], _T("xx"));
  EXPECT_THROW(array[88], std::out_of_range);
}

TEST(List, KeepsOrderAndSerializesValues) {
  CList<int, int> list;
  EXPECT_THROW(list.RemoveHead(), std::out_of_range);
  const POSITION two = list.AddTail(2);
  list.AddHead(1);
  list.InsertAfter(two, 4);
  list.InsertAfter(two, 3);
  EXPECT_EQ(Walk(list), "1 2 3 4 ");
  list.RemoveAt(list.Find(2));
  EXPECT_EQ(list.RemoveTail(), 4);
  list.AddTail(&list);
  EXPECT_EQ(Walk(list), "1 3 1 3 ");
  const std::string bytes = Store([&](CArchive& ar) { list.Serialize(ar); });
  EXPECT_EQ(Hex(bytes.substr(0, 6)), "04 00 01 00 00 00");
  CList<int, int> loaded;
  Load(bytes, [&](CArchive& ar) { loaded.Serialize(ar); });
  EXPECT_EQ(Walk(loaded), "1 3 1 3 ");
}

// A value without archive operators can be in a list, and storing it raises.
TEST(List, RefusesToSerializeWhatHasNoOperator) {
  CList<std::string> list;
  list.AddTail("x");
  EXPECT_THROW(Store([&](CArchive& ar) { list.Serialize(ar); }), CArchiveException);
}

}  // namespace
