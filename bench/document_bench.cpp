// Saves and loads documents of the command line: the tree of tools, setups, features and operations that `kestrova
// document new` creates. The peers save and load plain structs with the same texts, numbers and links. They use one
// struct for all nodes, which saves them the class records. Links are Boost's tracked pointers and cereal's shared
// pointers.
#include <unistd.h>

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/vector.hpp>
#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <tuple>

#include "bench/boost_u16string.h"
#include "bench/peak_memory.h"
#include "bench/ratio.h"
#include "framework/archive.h"
#include "framework/file.h"
#include "framework/ob_list.h"
#include "host/document/active_document.h"
#include "host/document/document_loader.h"
#include "host/document/drilling_node.h"
#include "host/document/feature_node.h"
#include "host/document/sample_document.h"
#include "host/document/setup_node.h"
#include "host/document/tool_node.h"
#include "host/module/main_module.h"
#include "share/core/document_messages.h"
#include "share/core/version_info.h"
#include "share/objects/serialize_notify.h"

// ---- the peers' node

struct PlainFields {
  std::u16string label, created_by, created, modified, modified_by, class_name;
  std::uint32_t id = 0, state = 0, colour = 0;
  std::uint16_t status = 0;
  std::int32_t kind = 0, flag = 0, flag_type = 0;
  std::vector<double> numbers;  // by class: frame, profile and depth, cutting values, or dimensions

  template <class Archive>
  void Fields(Archive& ar) {
    ar& label& created_by& created& modified& modified_by& class_name& id& state& colour& status& kind& flag& flag_type&
        numbers;
  }
};

struct PlainNode : PlainFields {
  PlainNode* owner = nullptr;
  PlainNode* first_owner = nullptr;
  PlainNode* tool = nullptr;
  std::vector<PlainNode*> users;

  template <class Archive>
  void serialize(Archive& ar, unsigned) {
    Fields(ar);
    ar& owner& first_owner& tool& users;
  }
};

struct SharedNode : PlainFields {
  std::weak_ptr<SharedNode> owner, first_owner, tool;
  std::vector<std::weak_ptr<SharedNode>> users;

  template <class Archive>
  void serialize(Archive& ar) {
    Fields(ar);
    ar(owner, first_owner, tool, users);
  }
};

namespace {

using namespace kestrova;

constexpr ULONGLONG kSeed = 1;

// ---- ours

using Document = std::unique_ptr<HostDocument>;

Document MakeDocument(std::size_t nodes) {
  auto document = std::make_unique<HostDocument>();
  const ActiveDocument active(document.get());
  FillWithSample(*document, DWORD(nodes), kSeed);
  return document;
}

void Save(const HostDocument& document, CFile& file) {
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&document);
  ar.Close();
}

// Includes the check of the links that build the tree.
Document LoadQuietly(std::string& bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  Document document(static_cast<HostDocument*>(ar.ReadObject(RUNTIME_CLASS(HostDocument))));
  if (!document->RepairLinks().empty()) std::abort();
  document->SetFullyLoaded();
  return document;
}

Document Load(std::string& bytes) {
  Document document = LoadQuietly(bytes);
  QFSerializeNotify::Clear();
  return document;
}

// The further steps of a host after loading: notify, repair the counts of the indexer, walk the tree.
Document LoadAndVerify(std::string& bytes) {
  Document document = LoadQuietly(bytes);
  QFSerializeNotify::PostLoadFromStorageNotify();
  QFSerializeNotify::Clear();
  std::map<CString, int> alive;
  for (DWORD place = 0; place < document->NodeCount(); ++place)
    ++alive[document->NodeAt(place).GetRegNameForAutoIndexing()];
  document->Indexer().CorrectIndexersReferences(alive);
  DWORD walked = 0;
  document->Walk([&](HostNode&, int) { ++walked; });
  if (walked != document->NodeCount()) std::abort();
  return document;
}

// ---- the peers

std::vector<double> NumbersOf(HostNode& node) {
  if (const auto* tool = DYNAMIC_DOWNCAST(HostTool, &node)) return {tool->Diameter(), tool->Length()};
  if (const auto* drilling = DYNAMIC_DOWNCAST(HostDrilling, &node))
    return {drilling->Feed(), drilling->Speed(), drilling->Step(), drilling->Peck()};
  if (const auto* operation = DYNAMIC_DOWNCAST(HostOperation, &node))
    return {operation->Feed(), operation->Speed(), operation->Step()};
  std::vector<double> numbers;
  if (const auto* feature = DYNAMIC_DOWNCAST(HostFeature, &node)) {
    for (const HostFeature::Point& point : feature->Profile()) numbers.insert(numbers.end(), {point.x, point.y});
    numbers.push_back(feature->Depth());
  } else {
    numbers.resize(11);  // of a setup: three vectors, an angle, a height
  }
  return numbers;
}

void CopyFields(HostNode& node, PlainFields& to) {
  to.label = node.Name().GetString();
  to.created_by = node.GetCreatedBy().GetString();
  to.created = node.GetDateCreated().GetString();
  to.modified = node.GetLastModified().GetString();
  to.modified_by = node.GetLastModifiedBy().GetString();
  to.class_name = node.GetRegNameForAutoIndexing().GetString();
  to.id = node.GetObjectId();
  to.state = std::uint32_t(node.GetState());
  to.colour = std::uint32_t(node.GetDisplayColor());
  if (const auto* tool = DYNAMIC_DOWNCAST(HostTool, &node)) to.kind = int(tool->Kind());
  to.numbers = NumbersOf(node);
}

// The document's nodes as the peer's structs, in the same order; link(node, place) returns the peer's pointer to a
// node.
template <class Nodes>
void CopyDocument(const HostDocument& document, Nodes& nodes) {
  for (DWORD place = 0; place < document.NodeCount(); ++place) {
    HostNode& node = document.NodeAt(place);
    const auto peer = [&](QFObject* to) { return nodes[static_cast<HostNode*>(to)->Place()]; };
    auto& copy = *nodes[place];
    CopyFields(node, copy);
    if (node.GetOwner()) copy.owner = peer(node.GetOwner());
    if (const auto* operation = DYNAMIC_DOWNCAST(HostOperation, &node); operation && operation->Tool())
      copy.tool = peer(operation->Tool());
    CObList users;
    node.GetAllUserObjects(&users);
    for (POSITION at = users.GetHeadPosition(); at;)
      copy.users.push_back(peer(static_cast<QFObject*>(users.GetNext(at))));
  }
}

struct Plain {
  std::vector<PlainNode*> nodes;
  Plain() = default;
  Plain(Plain&& other) noexcept : nodes(std::move(other.nodes)) {}
  ~Plain() {
    for (PlainNode* node : nodes) delete node;
  }
};

using Shared = std::vector<std::shared_ptr<SharedNode>>;

Plain MakePlain(const HostDocument& document) {
  Plain plain;
  for (DWORD i = 0; i < document.NodeCount(); ++i) plain.nodes.push_back(new PlainNode);
  CopyDocument(document, plain.nodes);
  return plain;
}

Shared MakeShared(const HostDocument& document) {
  Shared shared(document.NodeCount());
  for (auto& node : shared) node = std::make_shared<SharedNode>();
  CopyDocument(document, shared);
  return shared;
}

// ---- the lower bound for any loader: the same number of objects, allocated and filled

// The host's nodes with plain members: the same number of texts, lists, links and numbers. Companions, patterns and
// flags are null in most nodes, and are null here.
struct FilledNode {
  virtual ~FilledNode() = default;

  std::u16string label, description, created_by, created, modified, modified_by, class_name, time_taken;
  std::vector<FilledNode*> users, held_users;
  FilledNode* owner = nullptr;
  FilledNode* first_owner = nullptr;
  FilledNode* match = nullptr;
  void* companion = nullptr;
  void* pattern = nullptr;
  FilledNode* first_child = nullptr;
  FilledNode* last_child = nullptr;
  FilledNode* next = nullptr;
  std::uint32_t id = 0, match_id = 0, state = 0, colour = 0, compared = 0, place = 0;
  std::uint16_t status = 0;
  bool merged = false, merging = false;
};
struct FilledTool : FilledNode {
  std::int32_t kind = 0;
  double diameter = 0, length = 0;
};
struct FilledSetup : FilledNode {
  double frame[11] = {};
};
struct FilledFeature : FilledNode {
  std::vector<HostFeature::Point> profile;
  double depth = 0;
};
struct FilledOperation : FilledNode {
  FilledNode* tool = nullptr;
  double feed = 0, speed = 0, step = 0;
  void* flag = nullptr;
};
struct FilledDrilling : FilledOperation {
  double peck = 0;
};

using Filled = std::vector<std::unique_ptr<FilledNode>>;

// The source of the values: the nodes, and their links by place. An owner and a tool precede the nodes that use them.
struct Originals {
  static constexpr DWORD kNone = HostNode::kNoPlace;
  struct Links {
    const CRuntimeClass* record = nullptr;
    DWORD owner = kNone, first_owner = kNone, tool = kNone;
  };

  explicit Originals(const HostDocument& document, const Plain& plain) : nodes(plain.nodes) {
    const auto place = [](QFObject* node) { return node ? static_cast<HostNode*>(node)->Place() : kNone; };
    for (DWORD i = 0; i < document.NodeCount(); ++i) {
      HostNode& node = document.NodeAt(i);
      const auto* operation = DYNAMIC_DOWNCAST(HostOperation, &node);
      links.push_back({node.GetRuntimeClass(), place(node.GetOwner()), place(node.GetOriginalOwner()),
                       operation ? place(operation->Tool()) : kNone});
    }
  }

  const std::vector<PlainNode*>& nodes;
  std::vector<Links> links;
};

std::unique_ptr<FilledNode> MakeFilled(const Originals::Links& links, const PlainNode& from, const Filled& filled) {
  const double* numbers = from.numbers.data();
  const auto operate = [&](FilledOperation& node) {
    if (links.tool != Originals::kNone) {
      node.tool = filled[links.tool].get();
      node.tool->users.push_back(&node);
    }
    std::tie(node.feed, node.speed, node.step) = std::tie(numbers[0], numbers[1], numbers[2]);
  };
  if (links.record == RUNTIME_CLASS(HostOperation)) {
    auto node = std::make_unique<FilledOperation>();
    operate(*node);
    return node;
  }
  if (links.record == RUNTIME_CLASS(HostDrilling)) {
    auto node = std::make_unique<FilledDrilling>();
    operate(*node);
    node->peck = numbers[3];
    return node;
  }
  if (links.record == RUNTIME_CLASS(HostFeature)) {
    auto node = std::make_unique<FilledFeature>();
    const auto* points = reinterpret_cast<const HostFeature::Point*>(numbers);
    node->profile.assign(points, points + from.numbers.size() / 2);
    node->depth = from.numbers.back();
    return node;
  }
  if (links.record == RUNTIME_CLASS(HostSetup)) {
    auto node = std::make_unique<FilledSetup>();
    std::copy_n(numbers, std::size(node->frame), node->frame);
    return node;
  }
  auto node = std::make_unique<FilledTool>();
  node->kind = from.kind;
  std::tie(node->diameter, node->length) = std::tie(numbers[0], numbers[1]);
  return node;
}

Filled AllocateAndFill(const Originals& originals) {
  Filled filled;
  filled.reserve(originals.nodes.size());
  FilledNode* top = nullptr;
  for (std::size_t i = 0; i < originals.nodes.size(); ++i) {
    const PlainNode& from = *originals.nodes[i];
    const Originals::Links& links = originals.links[i];
    filled.push_back(MakeFilled(links, from, filled));
    FilledNode& node = *filled.back();
    node.label = from.label;
    node.created_by = from.created_by;
    node.created = from.created;
    node.modified = from.modified;
    node.modified_by = from.modified_by;
    node.class_name = from.class_name;
    node.users.reserve(from.users.size());
    node.id = from.id;
    node.state = from.state;
    node.colour = from.colour;
    node.place = std::uint32_t(i);
    if (links.first_owner != Originals::kNone) {
      node.first_owner = filled[links.first_owner].get();
      node.first_owner->users.push_back(&node);
    }
    FilledNode*& last = links.owner != Originals::kNone ? filled[links.owner]->last_child : top;
    if (links.owner != Originals::kNone) {
      node.owner = filled[links.owner].get();
      if (!last) node.owner->first_child = &node;
    }
    if (last) last->next = &node;
    last = &node;
  }
  return filled;
}

// ---- archives of the peers

// The peers read from a stream. This one reads the bytes without a copy.
class MemoryBuffer : public std::streambuf {
 public:
  explicit MemoryBuffer(const std::string& bytes) {
    char* start = const_cast<char*>(bytes.data());
    setg(start, start, start + bytes.size());
  }
};

std::string SaveBoost(const Plain& plain) {
  std::ostringstream out;
  {
    boost::archive::binary_oarchive ar(out, boost::archive::no_header);
    ar << plain.nodes;
  }
  return std::move(out).str();
}

Plain LoadBoost(const std::string& bytes) {
  MemoryBuffer buffer(bytes);
  boost::archive::binary_iarchive ar(buffer, boost::archive::no_header);
  Plain plain;
  ar >> plain.nodes;
  return plain;
}

std::string SaveCereal(const Shared& shared) {
  std::ostringstream out;
  {
    cereal::BinaryOutputArchive ar(out);
    ar(shared);
  }
  return std::move(out).str();
}

Shared LoadCereal(const std::string& bytes) {
  MemoryBuffer buffer(bytes);
  std::istream in(&buffer);
  cereal::BinaryInputArchive ar(in);
  Shared shared;
  ar(shared);
  return shared;
}

// ---- files

class Folder {
 public:
  Folder() { std::filesystem::create_directories(path_); }
  ~Folder() { std::filesystem::remove_all(path_); }
  std::string File(const char* name) const { return (path_ / name).string(); }

 private:
  const std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("document_bench-" + std::to_string(getpid()));
};

// Flushed to the disk, as a document is.
void WriteBytes(const std::string& path, const std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) std::abort();
  if (std::fflush(file) != 0 || fsync(fileno(file)) != 0) std::abort();
  std::fclose(file);
}

std::string ReadBytes(const std::string& path) {
  std::string bytes(std::filesystem::file_size(path), '\0');
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file || std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) std::abort();
  std::fclose(file);
  return bytes;
}

// ---- tables

std::string Megabytes(std::size_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB", double(bytes) / 1e6);
  return text;
}

// Seconds per node.
struct PerNode {
  double save = 0;
  double load = 0;
  double verify = 0;
};

// The peak of memory while loading, compared with the memory of the loaded document.
void PeakRow(std::size_t size, std::string& bytes) {
  Document kept;
  std::ptrdiff_t stays = 0;
  const std::size_t peak = kvbench::PeakBytes([&] {
    kept = Load(bytes);
    stays = kvbench::memory_count.live;
  });
  kvbench::Table::Row({"peak while loading", size, "what stays loaded", 1.3, 1}, Megabytes(peak),
                      Megabytes(std::size_t(stays)), double(peak) / double(stays));
}

void Files(kvbench::Table& table, std::size_t size, HostDocument& document, const std::string& bytes, int pairs) {
  const Folder folder;
  const std::string path = folder.File("part.kvdoc");
  const ActiveDocument active(&document);
  table.Pair(
      {"save to a file", size, "writing the bytes, fsync", 0, 1}, [&] { SaveDocument(document, path); },
      [&] { WriteBytes(folder.File("bytes"), bytes); }, pairs);
  table.Pair(
      {"load from a file", size, "reading the bytes", 0, 1},
      [&] { return DocumentLoader(path, DocumentLoader::Mode::kStrict).Load(); },
      [&] { return ReadBytes(folder.File("bytes")); }, pairs);
}

PerNode Documents(std::size_t size) {
  const Document document = MakeDocument(size);
  const Plain plain = MakePlain(*document);
  const Originals originals(*document, plain);
  const Shared shared = MakeShared(*document);
  const std::string boost_bytes = SaveBoost(plain);
  const std::string cereal_bytes = SaveCereal(shared);
  CMemFile saved(1 << 20);
  Save(*document, saved);
  std::string bytes(reinterpret_cast<const char*>(saved.GetData()), std::size_t(saved.GetLength()));
  if (LoadBoost(boost_bytes).nodes.size() != size || LoadCereal(cereal_bytes).size() != size) std::abort();
  const int pairs = size < 1'000'000 ? 7 : 5;
  const auto save = [&] {
    CMemFile file(1 << 20);
    Save(*document, file);
    kvbench::Keep(file.GetLength());
  };
  kvbench::Table table("Documents of " + std::to_string(size) + " nodes");
  std::printf("| bytes | %zu | %zu | Boost.Serialization, cereal | %zu, %zu | | |\n", size, bytes.size(),
              boost_bytes.size(), cereal_bytes.size());
  PerNode per;
  per.save = table
                 .Pair(
                     {"save", size, "Boost.Serialization", 0.5, 1}, save,
                     [&] { kvbench::Keep(SaveBoost(plain).size()); }, pairs)
                 .seconds;
  table.Pair(
      {"save", size, "cereal", 0.5, 1}, save, [&] { kvbench::Keep(SaveCereal(shared).size()); }, pairs);
  table.Pair(
      {"load", size, "Boost.Serialization", 0.5, 1}, [&] { return Load(bytes); },
      [&] { return LoadBoost(boost_bytes); }, pairs);
  table.Pair(
      {"load", size, "cereal", 0.5, 1}, [&] { return Load(bytes); }, [&] { return LoadCereal(cereal_bytes); }, pairs);
  per.load = table
                 .Pair(
                     {"load", size, "allocating and filling objects", 1.0, 1}, [&] { return Load(bytes); },
                     [&] { return AllocateAndFill(originals); }, pairs)
                 .seconds;
  per.verify = table
                   .Pair(
                       {"load and verify", size, "load", 0, 1}, [&] { return LoadAndVerify(bytes); },
                       [&] { return Load(bytes); }, pairs)
                   .seconds;
  if (size >= 100'000) PeakRow(size, bytes);
  Files(table, size, *document, bytes, pairs);
  return {per.save / double(size), per.load / double(size), per.verify / double(size)};
}

}  // namespace

int main() {
  StartMainModule();
  const MainModuleScope scope;
  HostDocument opening;  // the active document while others are read
  const ActiveDocument active(&opening);
  SetActiveDocReadStorageUnits(CKVVersionInfo::QF_STORAGE_VERSION);
  PerNode small;
  for (const std::size_t size : {1'000u, 10'000u, 100'000u, 1'000'000u}) {
    const PerNode per = Documents(size);
    if (size == 1'000) small = per;
    if (size != 1'000'000) continue;
    kvbench::Table table("Documents: time for a node, in one of a million and in one of a thousand");
    const auto row = [&](const char* name, double PerNode::*time) {
      kvbench::Table::Row({name, size, "the same, 1000 nodes", 0, 1}, kvbench::detail::Time(per.*time),
                          kvbench::detail::Time(small.*time), per.*time / small.*time);
    };
    row("save", &PerNode::save);
    row("load", &PerNode::load);
    row("load and verify", &PerNode::verify);
  }
}
