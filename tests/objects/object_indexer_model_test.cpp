// The object indexer against a walk through plain rows, and with long rows.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/objects/indexed_nodes.h"
#include "tests/scratch.h"

namespace {

using namespace kvtest;

// The indexer by walking rows. Several entries may have one name.
struct Model {
  Entries entries;

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
};

}  // namespace

TEST(IndexerModel, RandomOperationsAsByWalking) {
  std::mt19937 random(kvtest::PrintedSeed());
  TestDocument document;
  const std::vector<std::u16string> names = {u"A", u"B", u"Hole", u"QFToolStation"};
  for (int round = 0; round < 60; ++round) {
    // Half of the helpers come from documents in which names stand twice.
    Model model;
    if (round % 2 == 0) model.entries = {{u"A", {1, 2, 1}, 2}, {u"", {5}, 1}, {u"A", {2, 3}, -1}, {u"B", {}, 0}};
    auto helper = LoadedObject<QFObjectIndexerHelper>(HelperBytes(model.entries));
    const DWORD idRange = round % 3 == 0 ? 5 : 300;  // few ids: duplicates
    const auto node = [&](std::size_t name, DWORD id) {
      document.nextId = id;
      auto made = std::make_unique<IndexedNode>(nullptr, CString(names[name]));
      made->GetObjectId();
      return made;
    };
    for (int step = 0; step < 500; ++step) {
      const std::size_t name = random() % names.size();
      const DWORD id = 1 + random() % idRange, other = 1 + random() % idRange;
      const auto object = node(name, id);
      switch (random() % 16) {
        case 0:
          object->SetRegNameForAutoIndexing(CString(names[name]));
          helper->ReleaseIndexer(object.get());
          model.Release(names[name]);
          break;
        case 1:
          if (step % 10 != 0) break;
          helper->ClearUnusedIndexers();
          model.Clear();
          break;
        case 2:
          if (step % 10 == 0) helper = LoadedObject<QFObjectIndexerHelper>(StoredObject(*helper));
          break;
        case 3:
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
          model.Add(names[name], id);
          break;
        default: ASSERT_EQ(helper->FindIndex(object.get()), model.Find(names[name], id)) << "id " << id;
      }
    }
    ASSERT_EQ(StoredObject(*helper), HelperBytes(model.entries));
  }
}

// By walking, these would take some 10^10 steps each.
TEST(IndexerModel, TimeOfACallDoesNotGrowWithTheRow) {
  constexpr DWORD kCount = 200'000;
  TestDocument document;
  QFObjectIndexerHelper helper;
  IndexedNode node, last, same;
  for (DWORD id = 1; id <= kCount; ++id) {
    document.nextId = id;
    node.Invalidate();
    helper.AddObj(&node);
    ASSERT_EQ(helper.FindIndex(&node), int(id - 1));
  }
  document.nextId = kCount;
  last.GetObjectId();
  same.GetObjectId();
  for (DWORD id = kCount - 1; id > 0; --id) {  // every place gets one and the same id, from the end on
    document.nextId = id;
    node.Invalidate();
    helper.ReplaceObj(&node, &same);
    ASSERT_EQ(helper.FindIndex(&same), int(id - 1));
  }
  for (DWORD position = 0; position < kCount - 1; ++position) {  // and gives it away again, from the start on
    ASSERT_EQ(helper.FindIndex(&same), int(position));
    helper.ReplaceObj(&same, &last);
  }
  EXPECT_EQ(helper.FindIndex(&same), -1);
  EXPECT_EQ(helper.FindIndex(&last), 0);
}
