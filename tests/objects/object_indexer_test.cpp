// The object indexer against a model that searches plain rows, its records of both schemas, damage, and the dump.
#include <algorithm>
#include <random>

#include "share/objects/object_indexer.h"
#include "tests/objects/dumped.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"
#include "tests/peak_memory.h"
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

// The start of a helper's record. Archive numbers: its class 1, the object 2, the base's class 3; then the entries'
// class is 4 and the first entry 5.
RecordBytes StartOfHelper(int entries) {
  return RecordBytes().NewClass("QFObjectIndexerHelper", 2).Class(1).NewClass("QFBaseObject", 2).Word(entries);
}

struct Entry {
  Text name;
  std::vector<DWORD> ids;
  int references = 0;

  int Find(DWORD id) const {
    const auto found = std::find(ids.begin(), ids.end(), id);
    return found == ids.end() ? -1 : int(found - ids.begin());
  }
};

// The model. Several entries may have the same name.
struct Model {
  std::vector<Entry> entries;

  Entry* First(const Text& name) {
    for (Entry& entry : entries)
      if (entry.name == name) return &entry;
    return nullptr;
  }
  void Add(const Text& name, DWORD id) {
    if (!First(name)) entries.push_back({name, {}, 0});
    ++First(name)->references;
    First(name)->ids.push_back(id);
  }
  bool Replace(const Text& name, DWORD oldId, DWORD newId) {
    bool done = false;
    for (Entry& entry : entries) {
      if (entry.name != name || entry.Find(oldId) < 0) continue;
      entry.ids[std::size_t(entry.Find(oldId))] = newId;
      done = true;
    }
    return done;
  }
  int Find(const Text& name, DWORD id) const {
    for (const Entry& entry : entries)
      if (entry.name == name && entry.Find(id) >= 0) return entry.Find(id);
    return -1;
  }
  void Release(const Text& name) {
    for (Entry& entry : entries)
      if (entry.name == name && entry.references != 0) --entry.references;
  }
  void Clear() {
    for (Entry& entry : entries)
      if (!entry.ids.empty() && entry.references <= 0) entry = {entry.name, {}, 0};
  }
  void Correct(const Text& counted, int count) {
    for (Entry& entry : entries)
      if (!entry.name.empty() && entry.name != _T("QFToolStation") && entry.name != _T("QFActiveToolSet"))
        entry.references = entry.name == counted ? count : 0;
  }
  // The record of a helper with these entries.
  std::string Bytes() const {
    RecordBytes bytes = StartOfHelper(int(entries.size()));
    for (const Entry& entry : entries) {
      (&entry == &entries.front() ? bytes.NewClass("QFObjectIndexer", 2) : bytes.Class(4)).Class(4).Class(3);
      bytes.Text(entry.name).Dwords(entry.ids).Raw(entry.references);
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
  const std::vector<Text> names = {_T("Hole"), _T("hole"), _T("QFActiveToolSet"), _T("Fr\u00E4ser"),
                                   _T("QFToolStation")};
  for (int round = 0; round < 60; ++round) {
    // Half of the helpers come from documents that have a name twice.
    Model model;
    if (round % 2 == 0)
      model.entries = {{_T("Hole"), {1, 2, 1}, 2}, {_T(""), {5}, 1}, {_T("Hole"), {2, 3}, -1}, {_T("hole"), {}, 0}};
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
      switch (random() % 8) {
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
          if (step % 25 == 0 && model.entries.size() < 20) {  // loading into a used helper appends
            Reader reader(Store([&](CArchive& ar) { helper->Serialize(ar); }));
            helper->Serialize(reader.ar);
            for (std::size_t i = 0, count = model.entries.size(); i < count; ++i)
              model.entries.push_back(Entry(model.entries[i]));
          }
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
        case 4: {
          const auto fresh = node(name, other);
          helper->ReplaceObj(object.get(), fresh.get());
          ASSERT_EQ(!fresh->GetRegNameForAutoIndexing().IsEmpty(), model.Replace(names[name], id, other));
          break;
        }
        default:
          helper->AddObj(object.get());
          ASSERT_EQ(object->GetRegNameForAutoIndexing(), CString(names[name]));
          model.Add(names[name], id);
      }
      const auto sought = node(registered, other);
      ASSERT_EQ(helper->FindIndex(sought.get()), model.Find(names[registered], other)) << "id " << other;
    }
    ASSERT_EQ(StoredObject(*helper), model.Bytes());
  }
}

TEST(Indexer, OnlyAListedNodeDrawsItsIdAndMissingObjectsHaveNoEffect) {
  TestDocument document;
  QFObjectIndexerHelper helper;
  Node node, late, other(nullptr, _T("Other")), nameless(nullptr);
  EXPECT_EQ(helper.FindIndex(&node), -1);
  helper.AddObj(&node);
  EXPECT_EQ(helper.FindIndex(&other), -1);
  EXPECT_EQ(document.nextId, 2u) << "the searches drew none";
  for (Node* each : {static_cast<Node*>(nullptr), &nameless}) {
    helper.AddObj(each);
    helper.ReleaseIndexer(each);  // its registered name is empty; no entry has an empty name
    helper.ReplaceObj(each, &nameless);
    EXPECT_EQ(helper.FindIndex(each), -1);
  }
  helper.ReplaceObj(&node, nullptr);
  EXPECT_EQ(StoredObject(helper), (Model{{{_T("QFObject"), {1}, 1}}}.Bytes()));
  helper.ReleaseIndexer(&node);
  helper.ClearUnusedIndexers();
  document.nextId = 11;
  EXPECT_EQ(helper.FindIndex(&late), -1);
  EXPECT_EQ(document.nextId, 11u) << "nor does the search for an emptied class";
}

TEST(Indexer, DumpsEveryEntry) {
  TestDocument document;
  QFObjectIndexerHelper helper;
  Node node;
  helper.AddObj(&node);
  helper.DumpData(nullptr);
  EXPECT_EQ(Dumped([&](FILE* file) { helper.DumpData(file); }),
            DumpBanner("QFObjectIndexerHelper Start") +
                "\nDumping for m_ObjIndexerList Start\n\n m_ObjIndexerList Total Items : 1\n"
                "\n m_ObjIndexerList count: 0\n" +
                DumpBanner("QFObjectIndexer Start") + "\n m_className: QFObject\n m_nIndexReferences: 1" +
                DumpBanner("QFObjectIndexer End") + "\nDumping for m_ObjIndexerList End\n\n m_nObjectSchemaNumber: 2" +
                DumpBanner("QFObjectIndexerHelper End"));
}

TEST(IndexerRecord, PresentAndOldestBytesLoadAndAreStoredInThePresentLayout) {
  const auto present = [](int references) {
    return Model{{{_T("Hole"), {7, 0x12345678, 7}, references}, {_T(""), {}, 0}}}.Bytes();
  };
  EXPECT_EQ(present(2).substr(0, 29), std::string("\xFF\xFF\x02\x00\x15\x00QFObjectIndexerHelper\x01\x80", 29));
  // Schema 1 without the base's records, as in documents before storage version 6.1. Archive numbers: the helper's
  // class 1, the helper 2, the entries' class 3.
  RecordBytes oldest;
  oldest.NewClass("QFObjectIndexerHelper", 1).Class(1).Word(2).NewClass("QFObjectIndexer", 1).Class(3).Text(_T("Hole"));
  oldest.Dwords({7, 0x12345678, 7}).Class(3).Class(3).Text(_T("")).Dwords({});
  const std::tuple<std::string, float, unsigned, int> rows[] = {
      {present(2), 38.0f, 2, 2}, {oldest.Get(), 6.0f, 1, /*as many nodes alive as ids*/ 3}};
  for (const auto& [bytes, units, schema, references] : rows) {
    SCOPED_TRACE(units);
    TestDocument document(units);
    const auto helper = LoadedObject<QFObjectIndexerHelper>(bytes);
    EXPECT_EQ(helper->GetObjectSchemaNumber(), schema);
    EXPECT_EQ(StoredObject(*helper), present(references));
    document.nextId = 0x12345678;
    Node hole(RUNTIME_CLASS(QFObject), _T("Hole"));
    EXPECT_EQ(helper->FindIndex(&hole), 1);
    ExpectEveryPrefixRaises<QFObjectIndexerHelper>(bytes);
  }
}

TEST(IndexerRecord, DamageRaises) {
  RecordBytes entry, twice;
  entry.NewClass("QFObjectIndexer", 2).Class(4).Class(3).Text(_T("A"));
  twice.Bytes(entry.Get()).Dwords({1}).Raw(0).Object(5);
  const std::tuple<const char*, int, std::string, int> rows[] = {
      {"more entries than bytes", 0xFFFE, "", CArchiveException::endOfFile},
      {"more ids than bytes", 1, RecordBytes(entry).Dword(0xFFFFFFFF).Raw(0).Get(), CArchiveException::endOfFile},
      {"an entry twice", 2, twice.Get(), CArchiveException::badIndex},
      {"the helper inside itself", 1, RecordBytes().Object(2).Get(), CArchiveException::badIndex},
      {"another class", 1, RecordBytes().Class(3).Word(0).Get(), CArchiveException::badClass},
      {"a record of another class", 1, RecordBytes().NewClass("QFObjectIndexer", 2).Class(1).Get(),
       CArchiveException::badClass},
  };
  TestDocument document;
  const long before = PeakMemory();
  for (const auto& [what, entries, bytes, cause] : rows)
    EXPECT_EQ(LoadCause<QFObjectIndexerHelper>(StartOfHelper(entries).Bytes(bytes).Get()), cause) << what;
  EXPECT_LT(PeakMemory() - before, 64 * 1024) << "nothing may be allocated for a number that can't be true";
}

TEST(IndexerRecord, NullEntriesAndWildCountsAreCarriedAlong) {
  TestDocument document;
  const auto bytes = [](int references) {
    RecordBytes helper = StartOfHelper(3).Null().NewClass("QFObjectIndexer", 2).Class(4).Class(3).Text(_T("Hole"));
    return helper.Dwords({7}).Raw(references).Null().Get();
  };
  const auto helper = LoadedObject<QFObjectIndexerHelper>(bytes(INT32_MIN));
  Node hole(RUNTIME_CLASS(QFObject), _T("Hole"));
  document.nextId = 7;
  EXPECT_EQ(helper->FindIndex(&hole), 0);
  hole.SetRegNameForAutoIndexing(_T("Hole"));
  helper->ReleaseIndexer(&hole);
  EXPECT_EQ(StoredObject(*helper), bytes(INT32_MIN));
  std::map<CString, int> counts = {{_T("Hole"), INT32_MAX}};
  helper->CorrectIndexersReferences(counts);
  EXPECT_EQ(counts.size(), 1u);
  EXPECT_EQ(StoredObject(*helper), bytes(INT32_MAX));
  EXPECT_NE(Dumped([&](FILE* file) { helper->DumpData(file); }).find("2147483647"), std::string::npos);
  helper->ClearUnusedIndexers();
  EXPECT_EQ(StoredObject(*helper), bytes(INT32_MAX));
}
