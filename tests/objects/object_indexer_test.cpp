// The object indexer: positions and counts by class.
#include <gtest/gtest.h>

#include <vector>

#include "tests/objects/dumped.h"
#include "tests/objects/indexed_nodes.h"

namespace {

using namespace kvtest;
using Node = IndexedNode;

CRuntimeClass RecordNamed(LPCSTR name) { return {name, 0, CRuntimeClass::kNoSchema, nullptr, nullptr}; }

class Indexer : public testing::Test {
 protected:
  // A node that got that id.
  Node& Add(DWORD id, CRuntimeClass* record = RUNTIME_CLASS(QFObject), const CString& name = CString()) {
    Node& node = Make(id, record, name);
    m_helper.AddObj(&node);
    return node;
  }
  Node& Make(DWORD id, CRuntimeClass* record = RUNTIME_CLASS(QFObject), const CString& name = CString()) {
    m_nodes.push_back(std::make_unique<Node>(record, name));
    m_document.nextId = id;
    EXPECT_EQ(m_nodes.back()->GetObjectId(), id);
    return *m_nodes.back();
  }
  void ExpectEntries(const Entries& entries) { EXPECT_EQ(StoredObject(m_helper), HelperBytes(entries)); }

  TestDocument m_document;
  std::vector<std::unique_ptr<Node>> m_nodes;
  QFObjectIndexerHelper m_helper;
};

}  // namespace

TEST_F(Indexer, NewNodeDrawsItsIdOnlyWhereItIsListed) {
  m_document.nextId = 11;
  Node node, other(nullptr, _T("Other"));
  EXPECT_EQ(m_helper.FindIndex(&node), -1);
  m_helper.AddObj(&node);
  m_document.nextId = 12;
  EXPECT_EQ(node.GetObjectId(), 11u);
  EXPECT_EQ(m_helper.FindIndex(&other), -1);
  EXPECT_EQ(other.GetObjectId(), 12u) << "not 11: the search drew none";
}

TEST_F(Indexer, NameOfItsOwnReplacesTheRuntimeClass) {
  const std::string longName(70, 'n');
  CRuntimeClass longRecord = RecordNamed(longName.c_str()), foreign = RecordNamed("Fr\xC3\xA4ser");
  Add(1, nullptr, _T("Setup"));
  Add(2, RUNTIME_CLASS(QFObject), _T("setup"));  // case counts
  Add(3, &longRecord);
  Add(4, &foreign);
  Node& again = Add(5, &longRecord);
  EXPECT_EQ(m_helper.FindIndex(&again), 1);
  ExpectEntries(
      {{u"Setup", {1}, 1}, {u"setup", {2}, 1}, {std::u16string(70, u'n'), {3, 5}, 2}, {u"Fr\u00E4ser", {4}, 1}});
}

TEST_F(Indexer, MissingObjectsAndClassesHaveNoEffect) {
  Node nameless(nullptr);
  m_helper.AddObj(nullptr);
  m_helper.AddObj(&nameless);
  m_helper.ReleaseIndexer(nullptr);
  m_helper.ReplaceObj(nullptr, &nameless);
  m_helper.ReplaceObj(&nameless, &nameless);
  EXPECT_EQ(m_helper.FindIndex(nullptr), -1);
  EXPECT_EQ(m_helper.FindIndex(&nameless), -1);
  ExpectEntries({});
  Node& node = Add(1);
  m_helper.ReplaceObj(&node, nullptr);
  m_helper.ReleaseIndexer(&nameless);  // its registered name is empty, and so is no entry's
  ExpectEntries({{u"QFObject", {1}, 1}});
}

TEST_F(Indexer, ReleasingKeepsPositionsAndGoesByTheRegisteredName) {
  CRuntimeClass tool = RecordNamed("Tool");
  Node& first = Add(1);
  Node& second = Add(2);
  Add(3, &tool);
  first.m_record = &tool;
  m_helper.ReleaseIndexer(&first);
  EXPECT_EQ(m_helper.FindIndex(&second), 1);
  ExpectEntries({{u"QFObject", {1, 2}, 1}, {u"Tool", {3}, 1}});
  for (int i = 0; i < 3; ++i) m_helper.ReleaseIndexer(&second);
  ExpectEntries({{u"QFObject", {1, 2}, 0}, {u"Tool", {3}, 1}});
  EXPECT_EQ(m_helper.FindIndex(&second), 1);
  m_helper.ClearUnusedIndexers();
  ExpectEntries({{u"QFObject", {}, 0}, {u"Tool", {3}, 1}});
  EXPECT_EQ(m_helper.FindIndex(&second), -1);
  Node fresh;
  m_document.nextId = 8;
  EXPECT_EQ(m_helper.FindIndex(&fresh), -1) << "an empty class draws no id";
  EXPECT_EQ(m_document.nextId, 8u);
  Add(9);
  EXPECT_EQ(m_helper.FindIndex(m_nodes.back().get()), 0);
  m_helper.RemoveAll();
  ExpectEntries({});
  EXPECT_EQ(m_helper.FindIndex(&second), -1);
}

TEST_F(Indexer, ReplacedObjectHandsItsPlaceOver) {
  Node& old = Add(1);
  Add(2);
  Add(1);
  Node& fresh = Make(3);
  Node& stranger = Make(99);
  stranger.SetRegNameForAutoIndexing(_T("kept"));
  m_helper.ReplaceObj(&stranger, &fresh);
  EXPECT_EQ(fresh.GetRegNameForAutoIndexing(), _T(""));
  m_helper.ReplaceObj(&old, &fresh);
  ExpectEntries({{u"QFObject", {3, 2, 1}, 3}});
  EXPECT_EQ(fresh.GetRegNameForAutoIndexing(), _T("QFObject"));
  EXPECT_EQ(m_helper.FindIndex(&fresh), 0);
  EXPECT_EQ(m_helper.FindIndex(&old), 2) << "the second place of the id that was there twice";
  m_helper.ReplaceObj(&old, &stranger);
  m_helper.ReplaceObj(&old, &fresh);
  ExpectEntries({{u"QFObject", {3, 2, 99}, 3}});
  EXPECT_EQ(m_helper.FindIndex(&old), -1);
}

TEST_F(Indexer, CountsAreCorrectedByClass) {
  std::map<CString, int> counts;
  for (LPCTSTR name : {_T("QFToolStation"), _T("QFActiveToolSet"), _T("Hole"), _T("Slot")}) Add(1, nullptr, name);
  m_helper.CorrectIndexersReferences(counts);
  EXPECT_TRUE(counts.empty());
  counts = {{_T("Hole"), 5}, {_T("QFToolStation"), 6}, {_T("hole"), 7}};
  m_helper.CorrectIndexersReferences(counts);
  ExpectEntries({{u"QFToolStation", {1}, 1}, {u"QFActiveToolSet", {1}, 1}, {u"Hole", {1}, 5}, {u"Slot", {1}, 0}});
  EXPECT_EQ(counts.size(), 4u);
  EXPECT_EQ(counts.at(_T("Slot")), 0);
  m_helper.ClearUnusedIndexers();
  ExpectEntries({{u"QFToolStation", {1}, 1}, {u"QFActiveToolSet", {1}, 1}, {u"Hole", {1}, 5}, {u"Slot", {}, 0}});
}

TEST_F(Indexer, DumpsEveryEntry) {
  Add(1);
  m_helper.DumpData(nullptr);
  const std::string text = Dumped([&](FILE* file) { m_helper.DumpData(file); });
  const std::string rule = "============================";
  EXPECT_EQ(text, "\n" + rule + " QFObjectIndexerHelper Start ====" + rule +
                      "\n\nDumping for m_ObjIndexerList Start\n\n m_ObjIndexerList Total Items : 1\n"
                      "\n m_ObjIndexerList count: 0\n\n" +
                      rule + " QFObjectIndexer Start ====" + rule +
                      "\n\n m_className: QFObject\n m_nIndexReferences: 1\n" + rule + " QFObjectIndexer End ====" +
                      rule + "\n\nDumping for m_ObjIndexerList End\n\n m_nObjectSchemaNumber: 2\n" + rule +
                      " QFObjectIndexerHelper End ====" + rule + "\n");
}
