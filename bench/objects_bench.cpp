// Nodes and their lists: the indexer with 1,000 to 1,000,000 nodes of 40 classes, the helpers of object lists, and a
// node's list of users.
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "bench/ratio.h"
#include "framework/archive.h"
#include "framework/list.h"
#include "share/core/document_callbacks.h"
#include "share/objects/node_lists.h"
#include "share/objects/object.h"
#include "share/objects/object_indexer.h"
#include "share/utilities/object_lists.h"

namespace {

constexpr std::size_t kClasses = 40;
constexpr std::size_t kFinds = 1000;  // per call

// A node of one of the classes.
class Node : public QFObject {
 public:
  explicit Node(CRuntimeClass* record) : m_record(record) {}
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override { return m_record; }

  CRuntimeClass* m_record;
};

// Names as long as those of node classes.
struct Classes {
  Classes() {
    for (std::size_t i = 0; i < kClasses; ++i)
      names.push_back("QFMillOperation" + std::to_string(i * i * 37) + (i % 2 ? "Feature" : "Node"));
    for (const std::string& name : names)
      records.push_back({name.c_str(), 0, CRuntimeClass::kNoSchema, nullptr, nullptr});
  }

  std::vector<std::string> names;
  std::vector<CRuntimeClass> records;
};

std::vector<std::unique_ptr<Node>> MakeNodes(Classes& classes, std::size_t count) {
  std::vector<std::unique_ptr<Node>> nodes;
  for (std::size_t i = 0; i < count; ++i) {
    nodes.push_back(std::make_unique<Node>(&classes.records[i % kClasses]));
    nodes.back()->GetObjectId();  // assigns the id outside the measured time
  }
  return nodes;
}

// ---- peers of the indexer

// Entries and ids in linked lists, searched from the head.
struct WalkedEntry {
  CString name;
  CList<DWORD, DWORD> ids;
  int references = 0;
};

class WalkedIndexer {
 public:
  void Add(Node& node) {
    const CString name = node.GetRuntimeClassForAutoIndexing()->m_lpszClassName;
    WalkedEntry* entry = Find(name);
    if (!entry) {
      m_entries.push_back(std::make_unique<WalkedEntry>());
      entry = m_entries.back().get();
      entry->name = name;
    }
    ++entry->references;
    entry->ids.AddTail(node.GetObjectId());
    node.SetRegNameForAutoIndexing(name);
  }
  int FindIndex(Node& node) {
    WalkedEntry* entry = Find(node.GetRuntimeClassForAutoIndexing()->m_lpszClassName);
    int index = 0;
    for (POSITION at = entry ? entry->ids.GetHeadPosition() : nullptr; at; ++index)
      if (entry->ids.GetNext(at) == node.GetObjectId()) return index;
    return -1;
  }

 private:
  WalkedEntry* Find(const CString& name) {
    for (const auto& entry : m_entries)
      if (entry->name == name) return entry.get();
    return nullptr;
  }

  std::vector<std::unique_ptr<WalkedEntry>> m_entries;
};

std::u16string WideName(Node& node) {
  const std::string_view name = node.GetRuntimeClassForAutoIndexing()->m_lpszClassName;
  return {name.begin(), name.end()};
}

// A row for each class name; with kPositions also the position of each id.
template <bool kPositions>
class MappedIndexer {
 public:
  void Add(Node& node) {
    Row& row = m_rows[WideName(node)];
    ++row.references;
    if constexpr (kPositions) row.positions.emplace(node.GetObjectId(), int(row.ids.size()));
    row.ids.push_back(node.GetObjectId());
  }
  int FindIndex(Node& node) {
    const auto found = m_rows.find(WideName(node));
    if (found == m_rows.end()) return -1;
    const Row& row = found->second;
    if constexpr (kPositions) {
      const auto place = row.positions.find(node.GetObjectId());
      return place == row.positions.end() ? -1 : place->second;
    }
    const auto place = std::find(row.ids.begin(), row.ids.end(), node.GetObjectId());
    return place == row.ids.end() ? -1 : int(place - row.ids.begin());
  }

 private:
  struct Row {
    std::vector<DWORD> ids;
    int references = 0;
    std::unordered_map<DWORD, int> positions;
  };
  std::unordered_map<std::u16string, Row> m_rows;
};

// ---- indexer

template <class Peer>
void PairAdd(kvbench::Table& table, const char* peer, double goal, const std::vector<std::unique_ptr<Node>>& nodes) {
  const std::size_t size = nodes.size();
  table.Pair(
      {"AddObj", size, peer, goal, size},
      [&] {
        auto helper = std::make_unique<QFObjectIndexerHelper>();
        for (const auto& node : nodes) helper->AddObj(node.get());
        return helper;
      },
      [&] {
        auto indexer = std::make_unique<Peer>();
        for (const auto& node : nodes) indexer->Add(*node);
        return indexer;
      },
      size < 1'000'000 ? 7 : 5);
}

template <class Peer>
void PairFind(kvbench::Table& table, const char* peer, double goal, QFObjectIndexerHelper& helper,
              const std::vector<std::unique_ptr<Node>>& nodes, const std::vector<std::size_t>& order) {
  Peer indexer;
  for (const auto& node : nodes) indexer.Add(*node);
  std::size_t a = 0, b = 0;
  const auto next = [&](std::size_t& at) -> Node& { return *nodes[order[at = (at + 1) % order.size()]]; };
  table.Pair(
      {"FindIndex", nodes.size(), peer, goal, kFinds},
      [&] {
        for (std::size_t i = 0; i < kFinds; ++i) kvbench::Keep(helper.FindIndex(&next(a)));
      },
      [&] {
        for (std::size_t i = 0; i < kFinds; ++i) kvbench::Keep(indexer.FindIndex(next(b)));
      });
}

std::string Saved(QFObjectIndexerHelper& helper) {
  CMemFile file(1 << 20);
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&helper);
  ar.Close();
  return {reinterpret_cast<const char*>(file.GetData()), std::size_t(file.GetLength())};
}

std::unique_ptr<QFObjectIndexerHelper> Loaded(std::string& bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  return std::unique_ptr<QFObjectIndexerHelper>(
      static_cast<QFObjectIndexerHelper*>(ar.ReadObject(RUNTIME_CLASS(QFObjectIndexerHelper))));
}

// The first search in each class after a document is loaded; it builds the index of the class's ids.
void PairFirstFind(kvbench::Table& table, QFObjectIndexerHelper& helper,
                   const std::vector<std::unique_ptr<Node>>& nodes) {
  std::string bytes = Saved(helper);
  table.Pair(
      {"load, find once in each class", nodes.size(), "loading, std::unordered_map of positions", 1.0},
      [&] {
        auto loaded = Loaded(bytes);
        for (std::size_t i = 0; i < kClasses; ++i) kvbench::Keep(loaded->FindIndex(nodes[i].get()));
        return loaded;
      },
      [&] {
        std::pair<std::unique_ptr<QFObjectIndexerHelper>, std::vector<std::unordered_map<DWORD, int>>> loaded;
        loaded.first = Loaded(bytes);
        loaded.second.resize(kClasses);
        for (std::size_t i = 0; i < kClasses; ++i) loaded.second[i].reserve(nodes.size() / kClasses + 1);
        for (std::size_t i = 0; i < nodes.size(); ++i)
          loaded.second[i % kClasses].emplace(nodes[i]->GetObjectId(), int(i / kClasses));
        return loaded;
      });
}

void BenchIndexer(kvbench::Table& table, std::size_t size) {
  Classes classes;
  const auto nodes = MakeNodes(classes, size);
  QFObjectIndexerHelper helper;
  for (const auto& node : nodes) helper.AddObj(node.get());
  std::vector<std::size_t> order(size);
  std::iota(order.begin(), order.end(), std::size_t(0));
  std::shuffle(order.begin(), order.end(), std::mt19937(1));

  if (size <= 100'000) PairAdd<WalkedIndexer>(table, "walking linked lists", 1.0, nodes);
  PairAdd<MappedIndexer<false>>(table, "std::unordered_map of vectors", 1.0, nodes);
  if (size <= 10'000) PairFind<WalkedIndexer>(table, "walking linked lists", 1.0, helper, nodes, order);
  if (size <= 100'000)
    PairFind<MappedIndexer<false>>(table, "std::unordered_map of vectors", 1.0, helper, nodes, order);
  PairFind<MappedIndexer<true>>(table, "std::unordered_map of vectors and maps", 1.0, helper, nodes, order);
  PairFirstFind(table, helper, nodes);
}

// ---- lists

using Objects = std::vector<std::unique_ptr<QFObject>>;

// Two lists in different order that share half of their elements.
void Fill(CObList& a, CObList& b, Objects& objects, std::size_t size) {
  for (std::size_t i = 0; i < size + size / 2; ++i) objects.push_back(std::make_unique<QFObject>());
  std::vector<QFObject*> row;
  for (const auto& object : objects) row.push_back(object.get());
  std::shuffle(row.begin(), row.begin() + std::ptrdiff_t(size), std::mt19937(1));
  for (std::size_t i = 0; i < size; ++i) a.AddTail(row[i]);
  std::shuffle(row.begin(), row.end(), std::mt19937(2));
  for (std::size_t i = 0; i < size; ++i) b.AddTail(row[i]);
}

std::unordered_set<CObject*> SetOf(const CObList& list) {
  std::unordered_set<CObject*> set;
  set.reserve(std::size_t(list.GetCount()));
  for (POSITION at = list.GetHeadPosition(); at;) set.insert(list.GetNext(at));
  return set;
}

void AddMissing(CObList& target, const CObList& source) {
  std::unordered_set<CObject*> met = SetOf(target);
  for (POSITION at = source.GetHeadPosition(); at;) {
    CObject* object = source.GetNext(at);
    if (object && object->IsKindOf(RUNTIME_CLASS(QFObject)) && met.insert(object).second) target.AddTail(object);
  }
}

void RemoveOthers(CObList& target, const CObList& wanted) {
  const std::unordered_set<CObject*> set = SetOf(wanted);
  for (POSITION at = target.GetHeadPosition(); at;) {
    const POSITION here = at;
    if (!set.contains(target.GetNext(at))) target.RemoveAt(here);
  }
}

void DropDuplicates(CObList& list) {
  std::unordered_set<CObject*> met;
  met.reserve(std::size_t(list.GetCount()));
  for (POSITION at = list.GetHeadPosition(); at;) {
    const POSITION here = at;
    if (!met.insert(list.GetNext(at)).second) list.RemoveAt(here);
  }
}

// A node's list of users. Duplicates come only from a document, so that list is filled directly.
void BenchUsers(kvbench::Table& table, const Objects& objects) {
  QFObject used;
  for (const auto& object : objects) used.AddToUserObjectsList(object.get(), /*held=*/0);
  CObList users;
  used.GetAllUserObjects(&users);
  table.Pair(
      {"RemoveDuplicatesFromUserObjects, none there", objects.size(), "a loop with std::unordered_set", 1.0},
      [&] { used.RemoveDuplicatesFromUserObjects(); }, [&] { DropDuplicates(users); });

  const auto fillTwice = [&](auto add) {
    for (int i = 0; i < 2; ++i)
      for (const auto& object : objects) add(object.get());
  };
  table.Pair(
      {"filling a list of users, RemoveDuplicates, each there twice", 2 * objects.size(),
       "a loop with std::unordered_set", 1.0},
      [&] {
        UserObjects list;
        fillTwice([&](QFObject* object) { list.Append(object); });
        list.RemoveDuplicates();
        kvbench::Keep(list.GetCount());
      },
      [&] {
        CObList list;
        fillTwice([&](QFObject* object) { list.AddTail(object); });
        DropDuplicates(list);
        kvbench::Keep(list.GetCount());
      });
}

void BenchLists(kvbench::Table& table, std::size_t size) {
  Objects objects;
  CObList a, b;
  Fill(a, b, objects, size);
  const auto pair = [&](const char* name, auto ours, auto theirs) {
    const auto on = [&](auto operation) {
      return [&, operation] {
        CObList target;
        target.AddTail(&a);
        operation(target);
        kvbench::Keep(target.GetCount());
      };
    };
    table.Pair({name, size, "a loop with std::unordered_set", 1.0}, on(ours), on(theirs));
  };
  pair(
      "CObList_Union", [&](CObList& target) { CObList_Union(target, b, nullptr); },
      [&](CObList& target) { AddMissing(target, b); });
  pair(
      "CObList_Xtion", [&](CObList& target) { CObList_Xtion(target, b, nullptr); },
      [&](CObList& target) { RemoveOthers(target, b); });
  pair(
      "FindAndAdd", [&](CObList& target) { FindAndAdd(target, b); }, [&](CObList& target) { AddMissing(target, b); });

  BenchUsers(table, objects);
}

}  // namespace

int main() {
  static unsigned long last_id = 0;
  QFShareRegisterDocCBK(
      nullptr, [] { return ++last_id; }, [] { return static_cast<QFObject*>(nullptr); }, nullptr, nullptr, nullptr,
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  {
    kvbench::Table table("Object indexer: nodes of 40 classes");
    for (const std::size_t size : {1'000u, 10'000u, 100'000u, 1'000'000u}) BenchIndexer(table, size);
  }
  kvbench::Table table("Lists of objects");
  for (const std::size_t size : {100u, 1'000u, 10'000u, 100'000u}) BenchLists(table, size);
}
