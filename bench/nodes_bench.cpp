// Loads and saves documents of nodes, and fills and empties a list of users. The peer of loading is a lower bound for
// any loader: it allocates the same number of nodes with the same texts and lists.
#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <list>
#include <memory>
#include <sstream>
#include <unordered_map>

#include "bench/peak_memory.h"
#include "bench/ratio.h"
#include "framework/archive.h"
#include "framework/file.h"
#include "framework/ob_list.h"
#include "share/core/document_callbacks.h"
#include "share/objects/object.h"

namespace {

constexpr std::size_t kChildren = 8;   // of each inner node
constexpr std::size_t kUsedEvery = 3;  // every third node is used by the node before it
constexpr std::size_t kSession = 200;  // nodes created or changed in one minute

// The fields of each node, the same for all contenders.
std::string LabelOf(std::size_t i) { return "Rectangular pocket " + std::to_string(i); }
std::string StampOf(std::size_t i) {
  char text[32];
  std::snprintf(text, sizeof text, "06/%02zu/2024::%02zu:%02zu", 1 + i / 1440 % 30, i / 60 % 24, i % 60);
  return text;
}

}  // namespace

class BenchNode : public QFObject {
  DECLARE_SERIAL(BenchNode)

 public:
  BenchNode() = default;
  void SetTexts(LPCTSTR label, LPCTSTR created, LPCTSTR modified) {
    m_Label = label;
    SetStamps({_T("a.designer"), created, modified, _T("a.programmer")});
    SetRegNameForAutoIndexing(CString(_T("BenchNode")));
  }
};
IMPLEMENT_SERIAL(BenchNode, QFObject, VERSIONABLE_SCHEMA | 1)

// A plain node with the same fields.
class PlainestNode : public CObject {
 public:
  CString label, createdBy, dateCreated, lastModified, lastModifiedBy, nodeDesc, regName, timeTaken;
  CObList users{10}, heldUsers{10};
  CObject* pointers[5] = {};
  DWORD numbers[5] = {};
  WORD status = 0;
  int flags[2] = {};
};

namespace {

class BenchDocument : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    if (message != QF_CORE_GET_READ_STORAGE_UNITS) return 0;
    *reinterpret_cast<float*>(std::uintptr_t(argument)) = 38.0f;
    return 1;
  }
};
BenchDocument* g_document = nullptr;

struct Texts {
  std::vector<CString> labels;
  std::vector<CString> stamps;
};

using Nodes = std::vector<std::unique_ptr<BenchNode>>;

// Deletes from the last to the first, so that the users of a node are deleted before it.
struct Document {
  Nodes nodes;
  Document() = default;
  Document(Document&&) = default;
  ~Document() {
    while (!nodes.empty()) nodes.pop_back();
  }
};

Document Build(std::size_t count, const Texts& texts) {
  Document document;
  document.nodes.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    auto node = std::make_unique<BenchNode>();
    node->SetTexts(texts.labels[i], texts.stamps[i / kSession], texts.stamps[i / kSession + 1]);
    if (i != 0) node->SetOwner(document.nodes[(i - 1) / kChildren].get());
    if (i % kUsedEvery == 1) node->AddToUserObjectsList(document.nodes[i - 1].get(), 0);
    document.nodes.push_back(std::move(node));
  }
  return document;
}

std::vector<std::unique_ptr<PlainestNode>> Allocate(std::size_t count, const Texts& texts) {
  std::vector<std::unique_ptr<PlainestNode>> nodes;
  nodes.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    auto node = std::make_unique<PlainestNode>();
    node->label = texts.labels[i].GetString();
    node->createdBy = _T("a.designer");
    node->dateCreated = texts.stamps[i / kSession].GetString();
    node->lastModified = texts.stamps[i / kSession + 1].GetString();
    node->lastModifiedBy = _T("a.programmer");
    node->regName = _T("BenchNode");
    if (i % kUsedEvery == 1) node->users.AddTail(nodes[i - 1].get());
    nodes.push_back(std::move(node));
  }
  return nodes;
}

// Loads in two phases as a document does: first the classes and numbers of all nodes, then their records.
void Save(const Document& document, CFile& file) {
  CArchive ar(&file, CArchive::store);
  ar << ULONGLONG(document.nodes.size());
  for (const auto& node : document.nodes) {
    ar.WriteClass(node->GetRuntimeClass());
    ar.MapObject(node.get());
  }
  for (const auto& node : document.nodes) node->Serialize(ar);
  ar.Close();
}

Document Load(std::string& bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  ULONGLONG count = 0;
  ar >> count;
  Document document;
  document.nodes.reserve(count);
  for (ULONGLONG i = 0; i < count; ++i) {
    document.nodes.emplace_back(static_cast<BenchNode*>(ar.ReadClass(RUNTIME_CLASS(BenchNode))->CreateObject()));
    ar.MapObject(document.nodes.back().get());
  }
  for (const auto& node : document.nodes) node->Serialize(ar);
  return document;
}

struct PlainNode {
  std::u16string label, created_by, created, modified, modified_by, name;
  std::uint32_t id = 0, state = 0, colour = 0;
  std::uint16_t status = 0;
  std::uint32_t owner = 0, first_owner = 0;
  std::vector<std::uint32_t> users;

  template <class Archive>
  void serialize(Archive& ar) {
    ar(users, label, created_by, created, modified, id, state, owner, modified_by, status, first_owner, colour, name);
  }
};

std::vector<PlainNode> BuildPlain(std::size_t count, const Texts& texts) {
  std::vector<PlainNode> nodes(count);
  for (std::size_t i = 0; i < count; ++i) {
    nodes[i].label = texts.labels[i].GetString();
    nodes[i].created_by = u"a.designer";
    nodes[i].created = texts.stamps[i / kSession].GetString();
    nodes[i].modified = texts.stamps[i / kSession + 1].GetString();
    nodes[i].modified_by = u"a.programmer";
    nodes[i].name = u"BenchNode";
    if (i % kUsedEvery == 1) nodes[i].users.push_back(std::uint32_t(i - 1));
  }
  return nodes;
}

std::string SaveCereal(const std::vector<PlainNode>& nodes) {
  std::ostringstream out;
  {
    cereal::BinaryOutputArchive ar(out);
    ar(nodes);
  }
  return std::move(out).str();
}

std::vector<PlainNode> LoadCereal(const std::string& bytes) {
  std::istringstream in(bytes);
  cereal::BinaryInputArchive ar(in);
  std::vector<PlainNode> nodes;
  ar(nodes);
  return nodes;
}

std::string Megabytes(std::size_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB", double(bytes) / 1e6);
  return text;
}

void Documents(std::size_t size) {
  Texts texts;
  for (std::size_t i = 0; i < size; ++i) texts.labels.push_back(FromUtf8(LabelOf(i)));
  for (std::size_t i = 0; i <= size / kSession + 1; ++i) texts.stamps.push_back(FromUtf8(StampOf(i)));
  const Document document = Build(size, texts);
  const auto plain = BuildPlain(size, texts);
  const std::string plain_bytes = SaveCereal(plain);
  CMemFile saved(1 << 20);
  Save(document, saved);
  std::string bytes(reinterpret_cast<const char*>(saved.GetData()), std::size_t(saved.GetLength()));
  const int pairs = size < 1'000'000 ? 7 : 5;
  kvbench::Table table("Nodes: a document of " + std::to_string(size));
  const auto save = [&] {
    CMemFile file(1 << 20);
    Save(document, file);
    kvbench::Keep(file.GetLength());
  };
  table.Pair(
      {"load", size, "allocating nodes and texts", 1.2, 1}, [&] { return Load(bytes); },
      [&] { return Allocate(size, texts); }, pairs);
  table.Pair(
      {"load", size, "cereal, plain structs", 0.5, 1}, [&] { return Load(bytes); },
      [&] { return LoadCereal(plain_bytes); }, pairs);
  table.Pair(
      {"save", size, "cereal, plain structs", 0.5, 1}, save, [&] { kvbench::Keep(SaveCereal(plain).size()); }, pairs);
  const std::size_t ours = kvbench::PeakBytes([&] { Load(bytes); });
  const std::size_t built = kvbench::PeakBytes([&] { Allocate(size, texts); });
  kvbench::Table::Row({"peak while loading", size, "allocating nodes and texts", 1.2, 1}, Megabytes(ours),
                      Megabytes(built), double(ours) / double(built));
}

// Adds all users of one node, and removes them in another order.
void Users(kvbench::Table& table, std::size_t size) {
  Nodes users;
  for (std::size_t i = 0; i < size; ++i) users.push_back(std::make_unique<BenchNode>());
  const auto other = [&](std::size_t i) { return users[i * 7919 % size].get(); };
  const auto ours = [&] {
    BenchNode node;
    for (const auto& user : users) node.AddToUserObjectsList(user.get(), 0);
    for (std::size_t i = 0; i < size; ++i) node.RemoveFromUserObjectsList(other(i));
  };
  const auto peer = [&] {
    std::list<QFObject*> list;
    std::unordered_map<QFObject*, std::list<QFObject*>::iterator> index;
    for (const auto& user : users)
      if (!index.contains(user.get())) index[user.get()] = list.insert(list.end(), user.get());
    for (std::size_t i = 0; i < size; ++i) {
      const auto found = index.find(other(i));
      if (found == index.end()) continue;
      list.erase(found->second);
      index.erase(found);
    }
  };
  table.Pair({"add and remove", size, "std::list with std::unordered_map", 1.0, size}, ours, peer);
}

}  // namespace

int main() {
  BenchDocument document;
  g_document = &document;
  QFShareRegisterDocCBK(
      nullptr, nullptr, []() -> QFObject* { return g_document; }, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  for (const std::size_t size : {1'000u, 10'000u, 100'000u, 1'000'000u}) Documents(size);
  kvbench::Table table("Nodes: users of one node");
  for (const std::size_t size : {10u, 1'000u, 100'000u}) Users(table, size);
}
