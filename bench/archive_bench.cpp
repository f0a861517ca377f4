// Saves and loads a tree of small objects with strings and back references: CArchive against Boost.Serialization
// (binary, tracked pointers) and cereal (binary, shared pointers) on the same graph, all in memory.
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/vector.hpp>
#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <memory>
#include <sstream>

#include "bench/boost_u16string.h"
#include "bench/peak_memory.h"
#include "bench/ratio.h"
#include "framework/archive.h"
#include "framework/file.h"
#include "framework/ob_list.h"

namespace {

constexpr int kChildren = 8;   // of each inner node
constexpr int kLinkEvery = 4;  // every fourth node refers to its parent

// The fields of each node apart from its children, the same for all contenders.
int NumberOf(std::size_t i) { return int(i * 7919 % 100003); }
double WeightOf(std::size_t i) { return double(i) * 0.5; }
std::string LabelOf(std::size_t i) { return "node " + std::to_string(i); }

}  // namespace

// ---- ours

class Node : public CObject {
  DECLARE_SERIAL(Node)

 public:
  Node() = default;
  ~Node() override {
    for (POSITION at = m_children.GetHeadPosition(); at;) delete m_children.GetNext(at);
  }
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_label << m_number << m_weight << m_link;
    } else {
      ar >> m_label >> m_number >> m_weight >> m_link;
    }
    m_children.Serialize(ar);
  }

  CString m_label;
  int m_number = 0;
  double m_weight = 0;
  Node* m_link = nullptr;
  CObList m_children;
};
IMPLEMENT_SERIAL(Node, CObject, 1)

// ---- the peers' node

struct PlainNode {
  std::u16string label;
  int number = 0;
  double weight = 0;
  PlainNode* link = nullptr;
  std::vector<PlainNode*> children;

  ~PlainNode() {
    for (PlainNode* child : children) delete child;
  }
  template <class Archive>
  void serialize(Archive& ar, unsigned) {
    ar& label& number& weight& link& children;
  }
};

struct SharedNode {
  std::u16string label;
  int number = 0;
  double weight = 0;
  std::weak_ptr<SharedNode> link;
  std::vector<std::shared_ptr<SharedNode>> children;

  template <class Archive>
  void serialize(Archive& ar) {
    ar(label, number, weight, link, children);
  }
};

namespace {

// A tree in breadth-first order: the children of node i begin at kChildren * i + 1.
template <class Make, class Adopt, class Link>
void Build(std::size_t count, Make make, Adopt adopt, Link link) {
  for (std::size_t i = 0; i < count; ++i) make(i);
  for (std::size_t i = 1; i < count; ++i) adopt((i - 1) / kChildren, i);
  for (std::size_t i = kLinkEvery; i < count; i += kLinkEvery) link(i, (i - 1) / kChildren);
}

std::u16string WideLabel(std::size_t i) {
  const std::string label = LabelOf(i);
  return {label.begin(), label.end()};
}

std::unique_ptr<Node> OurTree(std::size_t count) {
  std::vector<Node*> nodes(count);
  Build(
      count,
      [&](std::size_t i) {
        Node* node = nodes[i] = new Node;
        node->m_label = FromUtf8(LabelOf(i));
        node->m_number = NumberOf(i);
        node->m_weight = WeightOf(i);
      },
      [&](std::size_t parent, std::size_t i) { nodes[parent]->m_children.AddTail(nodes[i]); },
      [&](std::size_t i, std::size_t to) { nodes[i]->m_link = nodes[to]; });
  return std::unique_ptr<Node>(nodes[0]);
}

std::unique_ptr<PlainNode> PlainTree(std::size_t count) {
  std::vector<PlainNode*> nodes(count);
  Build(
      count,
      [&](std::size_t i) {
        nodes[i] = new PlainNode{WideLabel(i), NumberOf(i), WeightOf(i), nullptr, {}};
      },
      [&](std::size_t parent, std::size_t i) { nodes[parent]->children.push_back(nodes[i]); },
      [&](std::size_t i, std::size_t to) { nodes[i]->link = nodes[to]; });
  return std::unique_ptr<PlainNode>(nodes[0]);
}

std::shared_ptr<SharedNode> SharedTree(std::size_t count) {
  std::vector<std::shared_ptr<SharedNode>> nodes(count);
  Build(
      count,
      [&](std::size_t i) {
        nodes[i] = std::make_shared<SharedNode>(SharedNode{WideLabel(i), NumberOf(i), WeightOf(i), {}, {}});
      },
      [&](std::size_t parent, std::size_t i) { nodes[parent]->children.push_back(nodes[i]); },
      [&](std::size_t i, std::size_t to) { nodes[i]->link = nodes[to]; });
  return nodes[0];
}

std::string SaveOurs(Node& root) {
  CMemFile file(1 << 20);
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&root);
  ar.Close();
  return std::string(reinterpret_cast<const char*>(file.GetData()), file.GetLength());
}

// Saves without the copy into a string that the set-up makes.
void SaveOursOnly(Node& root) {
  CMemFile file(1 << 20);
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&root);
  ar.Close();
  kvbench::Keep(file.GetLength());
}

Node* LoadOurs(std::string& bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  return static_cast<Node*>(ar.ReadObject(RUNTIME_CLASS(Node)));
}

// The peers read from a stream. This one reads the bytes without a copy.
class MemoryBuffer : public std::streambuf {
 public:
  explicit MemoryBuffer(const std::string& bytes) {
    char* start = const_cast<char*>(bytes.data());
    setg(start, start, start + bytes.size());
  }
};

std::string SaveBoost(const PlainNode* root) {
  std::ostringstream out;
  {
    boost::archive::binary_oarchive ar(out, boost::archive::no_header);
    ar << root;
  }
  return std::move(out).str();
}

PlainNode* LoadBoost(const std::string& bytes) {
  MemoryBuffer buffer(bytes);
  boost::archive::binary_iarchive ar(buffer, boost::archive::no_header);
  PlainNode* root = nullptr;
  ar >> root;
  return root;
}

std::string SaveCereal(const std::shared_ptr<SharedNode>& root) {
  std::ostringstream out;
  {
    cereal::BinaryOutputArchive ar(out);
    ar(root);
  }
  return std::move(out).str();
}

std::shared_ptr<SharedNode> LoadCereal(const std::string& bytes) {
  MemoryBuffer buffer(bytes);
  std::istream in(&buffer);
  cereal::BinaryInputArchive ar(in);
  std::shared_ptr<SharedNode> root;
  ar(root);
  return root;
}

std::string Megabytes(std::size_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB", double(bytes) / 1e6);
  return text;
}

void PeakRow(const char* name, std::size_t size, const char* peer, std::size_t ours, std::size_t theirs) {
  kvbench::Table::Row({name, size, peer, 1.0, 1}, Megabytes(ours), Megabytes(theirs), double(ours) / double(theirs));
}

}  // namespace

int main() {
  kvbench::Table table("Archive: a tree of small objects with strings and back references");
  for (const std::size_t size : {100u, 1'000u, 10'000u, 100'000u, 1'000'000u}) {
    const auto ours = OurTree(size);
    const auto plain = PlainTree(size);
    const auto shared = SharedTree(size);
    std::string bytes = SaveOurs(*ours);
    const std::string boost_bytes = SaveBoost(plain.get());
    const std::string cereal_bytes = SaveCereal(shared);
    const int pairs = size < 1'000'000 ? 7 : 5;

    table.Pair(
        {"save", size, "Boost.Serialization", 0.5, 1}, [&] { SaveOursOnly(*ours); },
        [&] { kvbench::Keep(SaveBoost(plain.get()).size()); }, pairs);
    table.Pair(
        {"save", size, "cereal", 0.5, 1}, [&] { SaveOursOnly(*ours); },
        [&] { kvbench::Keep(SaveCereal(shared).size()); }, pairs);
    table.Pair(
        {"load", size, "Boost.Serialization", 0.5, 1}, [&] { return std::unique_ptr<Node>(LoadOurs(bytes)); },
        [&] { return std::unique_ptr<PlainNode>(LoadBoost(boost_bytes)); }, pairs);
    table.Pair(
        {"load", size, "cereal", 0.5, 1}, [&] { return std::unique_ptr<Node>(LoadOurs(bytes)); },
        [&] { return LoadCereal(cereal_bytes); }, pairs);
    if (size < 100'000) continue;

    const std::size_t save = kvbench::PeakBytes([&] { SaveOursOnly(*ours); });
    PeakRow("peak while saving", size, "Boost.Serialization", save,
            kvbench::PeakBytes([&] { kvbench::Keep(SaveBoost(plain.get()).size()); }));
    PeakRow("peak while saving", size, "cereal", save,
            kvbench::PeakBytes([&] { kvbench::Keep(SaveCereal(shared).size()); }));
    const std::size_t load = kvbench::PeakBytes([&] { delete LoadOurs(bytes); });
    PeakRow("peak while loading", size, "Boost.Serialization", load,
            kvbench::PeakBytes([&] { delete LoadBoost(boost_bytes); }));
    PeakRow("peak while loading", size, "cereal", load, kvbench::PeakBytes([&] { LoadCereal(cereal_bytes).reset(); }));
  }
}
