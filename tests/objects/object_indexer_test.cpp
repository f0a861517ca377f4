// The object indexer against a model that searches plain rows; then ids that must not be given out, missing objects,
// and the dump.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "share/objects/object_indexer.h"
#include "tests/objects/dumped.h"
#include "tests/objects/loaded_object.h"
#include "tests/objects/test_document.h"
#include "tests/scratch.h"

namespace {

using namespace kvtest;

// A node with a chosen run-time class and a chosen name for the indexer.
class Node : public QFObject {
 public:
  explicit Node(CRuntimeClass* record = RUNTIME_CLASS(QFObject), const CString& name = CString())
      : m_record(record), m_name(name) {}
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override { return m_record; }
  CString GetRegisterNodeName() override { return m_name; }

 private:
  CRuntimeClass* m_record;
  CString m_name;
};

struct Entry {
  std::u16string name;
  std::vector<DWORD> ids;
  int references = 0;
};

// The model. Several entries may have the same name.
struct Model {
  std::vector<Entry> entries;

  Entry* First(const std::u16string& name) {
    for (Entry& entry : entries)
      if (entry.name == name) return &entry;
    return nullptr;
  }
  void Add(const std::u16string& name, DWORD id) {
    if (!First(name)) entries.push_back({name, {}, 0});
    ++First(name)->references;
    First(name)->ids.push_back(id);
  }
  bool Replace(const std::u16string& name, DWORD oldId, DWORD newId) {
    bool done = false;
    for (Entry& entry : entries) {
      const auto found = std::find(entry.ids.begin(), entry.ids.end(), oldId);
      if (entry.name != name || found == entry.ids.end()) continue;
      *found = newId;
      done = true;
    }
    return done;
  }
  int Find(const std::u16string& name, DWORD id) {
    for (const Entry& entry : entries) {
      const auto found = std::find(entry.ids.begin(), entry.ids.end(), id);
      if (entry.name == name && found != entry.ids.end()) return int(found - entry.ids.begin());
    }
    return -1;
  }
  void Release(const std::u16string& name) {
    for (Entry& entry : entries)
      if (entry.name == name && entry.references != 0) --entry.references;
  }
  void Clear() {
    for (Entry& entry : entries)
      if (!entry.ids.empty() && entry.references <= 0) entry = {entry.name, {}, 0};
  }
  void Correct(const std::u16string& counted, int count) {
    for (Entry& entry : entries)
      if (!entry.name.empty() && entry.name != u"QFToolStation" && entry.name != u"QFActiveToolSet")
        entry.references = entry.name == counted ? count : 0;
  }
  // The record of a helper with these entries.
  std::string Bytes() const {
    RecordBytes bytes;
    bytes.NewClass("QFObjectIndexerHelper", 2).Class(1).NewClass("QFBaseObject", 2).Word(int(entries.size()));
    for (const Entry& entry : entries) {
      if (&entry == &entries.front()) {
        bytes.NewClass("QFObjectIndexer", 2);
      } else {
        bytes.Class(4);
      }
      bytes.Class(4).Class(3).Text(entry.name).Dword(unsigned(entry.ids.size()));
      for (const DWORD id : entry.ids) bytes.Dword(id);
      bytes.Raw(entry.references);
    }
    return bytes.Get();
  }
};

}  // namespace

TEST(Indexer, RandomOperationsAsByWalking) {
  std::mt19937 random(PrintedSeed());
  TestDocument document;
  CRuntimeClass foreign = {"Fr\xC3\xA4ser", 0, CRuntimeClass::kNoSchema, nullptr, nullptr};
  CRuntimeClass station = {"QFToolStation", 0, CRuntimeClass::kNoSchema, nullptr, nullptr};
  // Nodes have the first three as their own names, the others through their run-time classes. Case differs.
  const std::vector<std::u16string> names = {u"Hole", u"hole", u"QFActiveToolSet", u"Fr\u00E4ser", u"QFToolStation"};
  for (int round = 0; round < 60; ++round) {
    // Half of the helpers come from documents that have a name twice.
    Model model;
    if (round % 2 == 0)
      model.entries = {{u"Hole", {1, 2, 1}, 2}, {u"", {5}, 1}, {u"Hole", {2, 3}, -1}, {u"hole", {}, 0}};
    auto helper = LoadedObject<QFObjectIndexerHelper>(model.Bytes());
    const DWORD idRange = round % 3 == 0 ? 5 : 300;  // few ids: duplicates
    const auto node = [&](std::size_t name, DWORD id) {
      document.nextId = id;
      CRuntimeClass* const record = name == 3 ? &foreign : name == 4 ? &station : RUNTIME_CLASS(QFObject);
      auto made = std::make_unique<Node>(record, name < 3 ? CString(names[name]) : CString());
      made->GetObjectId();
      return made;
    };
    for (int step = 0; step < 500; ++step) {
      const std::size_t name = random() % names.size(), registered = random() % names.size();
      const DWORD id = 1 + random() % idRange, other = 1 + random() % idRange;
      const auto object = node(name, id);
      switch (random() % 16) {
        case 0:
          object->SetRegNameForAutoIndexing(CString(names[registered]));
          helper->ReleaseIndexer(object.get());
          model.Release(names[registered]);
          break;
        case 1:
          if (step % 10 != 0) break;
          helper->ClearUnusedIndexers();
          model.Clear();
          break;
        case 2:
          if (step % 10 == 0) helper = LoadedObject<QFObjectIndexerHelper>(StoredObject(*helper));
          if (step % 50 != 0) break;
          helper->RemoveAll();
          model.entries.clear();
          break;
        case 3: {
          if (step % 10 != 0) break;
          std::map<CString, int> counts;
          helper->CorrectIndexersReferences(counts);  // an empty map changes nothing
          ASSERT_EQ(StoredObject(*helper), model.Bytes());
          counts = {{CString(names[registered]), 7}};
          helper->CorrectIndexersReferences(counts);
          model.Correct(names[registered], 7);
          ASSERT_EQ(counts.contains(CString(names[1])), registered == 1 || model.First(names[1]) != nullptr);
          break;
        }
        case 4:
        case 5: {
          const auto fresh = node(name, other);
          helper->ReplaceObj(object.get(), fresh.get());
          ASSERT_EQ(!fresh->GetRegNameForAutoIndexing().IsEmpty(), model.Replace(names[name], id, other));
          break;
        }
        case 6:
        case 7:
        case 8:
        case 9:
          helper->AddObj(object.get());
          ASSERT_EQ(object->GetRegNameForAutoIndexing(), CString(names[name]));
          model.Add(names[name], id);
          break;
        default: ASSERT_EQ(helper->FindIndex(object.get()), model.Find(names[name], id)) << "id " << id;
      }
    }
    ASSERT_EQ(StoredObject(*helper), model.Bytes());
  }
}

TEST(Indexer, NewNodeDrawsItsIdOnlyWhereItIsListed) {
  TestDocument document;
  QFObjectIndexerHelper helper;
  document.nextId = 11;
  Node node, other(nullptr, _T("Other")), late;
  EXPECT_EQ(helper.FindIndex(&node), -1);
  helper.AddObj(&node);
  EXPECT_EQ(helper.FindIndex(&other), -1);
  EXPECT_EQ(document.nextId, 12u) << "the searches drew none";
  helper.ReleaseIndexer(&node);
  helper.ClearUnusedIndexers();
  EXPECT_EQ(helper.FindIndex(&late), -1);
  EXPECT_EQ(document.nextId, 12u) << "nor does an emptied class";
}

TEST(Indexer, MissingObjectsAndClassesHaveNoEffect) {
  TestDocument document;
  QFObjectIndexerHelper helper;
  Node node, nameless(nullptr);
  helper.AddObj(&node);
  helper.AddObj(nullptr);
  helper.AddObj(&nameless);
  helper.ReleaseIndexer(nullptr);
  helper.ReleaseIndexer(&nameless);  // its registered name is empty; no entry has an empty name
  helper.ReplaceObj(nullptr, &nameless);
  helper.ReplaceObj(&nameless, &nameless);
  helper.ReplaceObj(&node, nullptr);
  EXPECT_EQ(helper.FindIndex(nullptr), -1);
  EXPECT_EQ(helper.FindIndex(&nameless), -1);
  const Model expected = {{{u"QFObject", {1}, 1}}};
  EXPECT_EQ(StoredObject(helper), expected.Bytes());
}

TEST(Indexer, DumpsEveryEntry) {
  TestDocument document;
  QFObjectIndexerHelper helper;
  Node node;
  helper.AddObj(&node);
  helper.DumpData(nullptr);
  const std::string rule = "============================";
  EXPECT_EQ(Dumped([&](FILE* file) { helper.DumpData(file); }),
            "\n" + rule + " QFObjectIndexerHelper Start ====" + rule +
                "\n\nDumping for m_ObjIndexerList Start\n\n m_ObjIndexerList Total Items : 1\n"
                "\n m_ObjIndexerList count: 0\n\n" +
                rule + " QFObjectIndexer Start ====" + rule + "\n\n m_className: QFObject\n m_nIndexReferences: 1\n" +
                rule + " QFObjectIndexer End ====" + rule +
                "\n\nDumping for m_ObjIndexerList End\n\n m_nObjectSchemaNumber: 2\n" + rule +
                " QFObjectIndexerHelper End ====" + rule + "\n");
}
