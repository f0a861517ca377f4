#include "host/machine/machine_tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <numeric>
#include <span>
#include <vector>

#include "host/shell/output.h"
#include "share/machine/machine.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kDeepestIndent = 20;  // deeper shapes have the same indent

template <class Object>
std::vector<const Object*> ObjectsOf(const CObList& list) {
  std::vector<const Object*> objects;
  objects.reserve(std::size_t(list.GetCount()));
  for (POSITION at = list.GetHeadPosition(); at;) objects.push_back(static_cast<const Object*>(list.GetNext(at)));
  return objects;
}

std::string VectorText(const FRVector& v) { return fmt::format("{:g} {:g} {:g}", v.x(), v.y(), v.z()); }
Json VectorJson(const FRVector& v) { return {v.x(), v.y(), v.z()}; }
bool IsZero(const FRVector& v) { return v.x() == 0 && v.y() == 0 && v.z() == 0; }
std::string Text(std::string_view ascii) { return std::string(ascii); }

FRVector OffsetOf(const CQVMChannel& c, int i) {
  return {c.GetFixtureXOffset(i), c.GetFixtureYOffset(i), c.GetFixtureZOffset(i)};
}
FRVector Base4thOf(const CQVMChannel& c, int i) {
  return {c.GetFixture4thBaseXOffset(i), c.GetFixture4thBaseYOffset(i), c.GetFixture4thBaseZOffset(i)};
}
FRVector Base5thOf(const CQVMChannel& c, int i) {
  return {c.GetFixture5thBaseXOffset(i), c.GetFixture5thBaseYOffset(i), c.GetFixture5thBaseZOffset(i)};
}

// One shape list of the table.
struct ShapeList {
  int row;
  CM_AXIS_TYPE axis;
  int fixture;               // index, or -1 for the tool
  std::span<const int> ids;  // of the table
};

std::vector<ShapeList> ListsOf(KVVMMachine& machine) {
  std::vector<ShapeList> lists;
  const KVVMShapeMngr& table = *machine.GetShapeMngr();
  for (int row = 0; row < table.GetChannelCount(); ++row) {
    for (int axis = 0; axis < kMachineAxes; ++axis) {
      for (int fixture = -1; fixture < KVVMShapeRefMngr::kFixtures; ++fixture) {
        const auto at = CM_AXIS_TYPE(axis);
        const KVVMShapeRef* shapes =
            fixture < 0 ? table.FindToolShapes(row, at) : table.FindFixtureShapes(row, at, fixture, /*zeroBased=*/1);
        if (!shapes || shapes->GetCount() == 0) continue;
        lists.push_back({row, at, fixture, {shapes->GetIDs(), std::size_t(shapes->GetCount())}});
      }
    }
  }
  return lists;
}

// ---- text

class Tree {
 public:
  explicit Tree(KVVMMachine& machine) : machine_(machine) {}

  void Print() {
    Line(0, "{} ({}), {}", ToUtf8(machine_.GetName()), TextOf(machine_.GetMachType()), MachineSummary(machine_));
    for (const auto* channel : ObjectsOf<CQVMChannel>(machine_.GetChannels())) WriteChannel(*channel);
    WriteShapes();
    WriteLists();
  }

 private:
  using Index = std::uint32_t;  // of a shape
  static constexpr Index kNoShape = Index(-1);
  struct Child {
    Index parent;  // kNoShape: none
    Index shape;
  };

  template <class... Values>
  void Line(int depth, fmt::format_string<Values...> format, Values&&... values) {
    std::string line(std::size_t(std::min(depth, kDeepestIndent)) * 2, ' ');
    fmt::format_to(std::back_inserter(line), format, std::forward<Values>(values)...);
    MakeHarmless(line);
    PrintRaw(line += '\n');
  }

  void WriteChannel(const CQVMChannel& channel) {
    Line(1, "channel {} {}", channel.GetChannelNum(), ToUtf8(channel.GetName()));
    if (channel.GetToolTarget() != MD_TURRET_NONE) WriteTarget(channel);
    for (int i = 0; i < CQVMChannel::kFixtures; ++i) {
      if (channel.GetFixtureStatus(i)) WriteFixture(channel, i);
    }
  }

  void WriteTarget(const CQVMChannel& channel) {
    const FRVector gauge(channel.GetToolGaugeX(), channel.GetToolGaugeY(), channel.GetToolGaugeZ());
    std::string line =
        fmt::format("{} {}, gauge {}", TextOf(channel.GetToolTarget()), channel.GetTurretNum(), VectorText(gauge));
    if (channel.GetToolTarget() == MD_TURRET) {
      line += fmt::format(", {} about {}, diameter {:g}", Counted(channel.GetNumStations(), "station"),
                          TextOf(channel.GetTurretDirType()), channel.GetTurretDiam());
    }
    line += AxesText(channel.Get4thAxisToolDirType(), channel.Get5thAxisToolDirType());
    Line(2, "{}", line);
    for (const auto* node : ObjectsOf<CQVMToolNode>(channel.GetToolNodes())) {
      Line(3, "station {} {}: at {}, X {}, Z {}", node->GetID(), ToUtf8(node->GetName()), VectorText(node->m_location),
           VectorText(node->m_vectorX), VectorText(node->m_vectorZ));
    }
  }

  static std::string AxesText(CMDirType fourth, CMDirType fifth) {
    std::string text;
    if (fourth != CM_DIR_NONE) text += fmt::format(", 4th axis {}", TextOf(fourth));
    if (fifth != CM_DIR_NONE) text += fmt::format(", 5th axis {}", TextOf(fifth));
    return text;
  }

  void WriteFixture(const CQVMChannel& channel, int index) {
    std::string line = fmt::format("fixture {}", index + 1);
    line += AxesText(channel.Get4thAxisFixtureDirType(index), channel.Get5thAxisFixtureDirType(index));
    const std::pair<const char*, FRVector> vectors[] = {{"offset", OffsetOf(channel, index)},
                                                        {"4th axis at", Base4thOf(channel, index)},
                                                        {"5th axis at", Base5thOf(channel, index)}};
    for (const auto& [name, vector] : vectors) {
      if (!IsZero(vector)) line += fmt::format(", {} {}", name, VectorText(vector));
    }
    Line(2, "{}", line);
  }

  // Each shape comes after its parent, indented. Shapes without a parent come first, rings of parents last.
  void WriteShapes() {
    shapes_ = ObjectsOf<CQVMShape>(machine_.GetShapes());
    if (!shapes_.empty()) Line(1, "shapes");
    FindChildren();
    written_.assign(shapes_.size(), false);
    for (const Child& child : ChildrenOf(kNoShape)) WriteWithChildren(child.shape);
    for (Index i = 0; i < shapes_.size(); ++i) {
      if (!written_[i]) WriteWithChildren(i);
    }
  }

  // A name means its first shape.
  void FindChildren() {
    std::vector<Index> named(shapes_.size());
    std::iota(named.begin(), named.end(), Index(0));
    const auto nameOf = [&](Index i) { return shapes_[i]->GetName().View(); };
    std::ranges::stable_sort(named, {}, nameOf);
    children_.reserve(shapes_.size());
    for (Index i = 0; i < shapes_.size(); ++i) {
      const TextView parent = shapes_[i]->GetParentName().View();
      const auto found = std::ranges::lower_bound(named, parent, {}, nameOf);
      const bool hangs = !parent.empty() && found != named.end() && nameOf(*found) == parent && *found != i;
      children_.push_back({hangs ? *found : kNoShape, i});
    }
    std::ranges::stable_sort(children_, {}, &Child::parent);
  }

  std::span<const Child> ChildrenOf(Index parent) const {
    return {std::ranges::lower_bound(children_, parent, {}, &Child::parent),
            std::ranges::upper_bound(children_, parent, {}, &Child::parent)};
  }

  void WriteWithChildren(Index first) {
    std::vector<std::pair<Index, int>> open = {{first, 2}};
    while (!open.empty()) {
      const auto [at, depth] = open.back();
      open.pop_back();
      if (written_[at]) continue;
      written_[at] = true;
      WriteShape(*shapes_[at], depth);
      const std::span<const Child> children = ChildrenOf(at);
      for (auto child = children.rbegin(); child != children.rend(); ++child)
        open.emplace_back(child->shape, depth + 1);
    }
  }

  void WriteShape(const CQVMShape& shape, int depth) {
    const CString file = shape.m_strPath.Mid(machine_.GetPersistentPath().GetLength());
    std::string line =
        fmt::format("{} {} ({}) {}", shape.GetID(), ToUtf8(shape.GetName()), TextOf(shape.m_nParentType), ToUtf8(file));
    const std::pair<const char*, FRVector> vectors[] = {
        {"offset", shape.m_offset}, {"home", shape.m_homeXYZ},   {"home ABC", shape.m_homeABC}, {"min", shape.m_minXYZ},
        {"max", shape.m_maxXYZ},    {"min ABC", shape.m_minABC}, {"max ABC", shape.m_maxABC}};
    for (const auto& [name, vector] : vectors) {
      if (!IsZero(vector)) line += fmt::format(", {} {}", name, VectorText(vector));
    }
    if (!shape.m_bVisible) line += ", hidden";
    Line(depth, "{}", line);
  }

  void WriteLists() {
    const std::vector<ShapeList> lists = ListsOf(machine_);
    if (!lists.empty()) Line(1, "shape lists");
    for (const ShapeList& list : lists) {
      const std::string carrier = list.fixture < 0 ? "tool" : fmt::format("fixture {}", list.fixture + 1);
      Line(2, "row {}, {} along {}: {}", list.row, carrier, TextOf(list.axis), fmt::join(list.ids, " "));
    }
  }

  KVVMMachine& machine_;
  std::vector<const CQVMShape*> shapes_;
  std::vector<Child> children_;  // by parent, then in file order
  std::vector<bool> written_;    // by shape
};

// ---- JSON

void PrintChannel(JsonPrinter& json, const CQVMChannel& channel) {
  json.Open({}, '{');
  json.Add("number", channel.GetChannelNum());
  json.Add("name", ToUtf8(channel.GetName()));
  json.Add("target", Text(TextOf(channel.GetToolTarget())));
  json.Add("turret", channel.GetTurretNum());
  json.Add("stationCount", channel.GetNumStations());
  json.Add("diameter", channel.GetTurretDiam());
  json.Add("direction", Text(TextOf(channel.GetTurretDirType())));
  json.Add("gauge", {channel.GetToolGaugeX(), channel.GetToolGaugeY(), channel.GetToolGaugeZ()});
  json.Open("stations", '[');
  for (const auto* node : ObjectsOf<CQVMToolNode>(channel.GetToolNodes())) {
    json.Add({}, {{"position", node->GetID()},
                  {"name", ToUtf8(node->GetName())},
                  {"location", VectorJson(node->m_location)},
                  {"vectorX", VectorJson(node->m_vectorX)},
                  {"vectorZ", VectorJson(node->m_vectorZ)}});
  }
  json.Close();
  json.Open("fixtures", '[');
  for (int i = 0; i < CQVMChannel::kFixtures; ++i) {
    if (!channel.GetFixtureStatus(i)) continue;
    json.Add({}, {{"id", i + 1},
                  {"axis4", Text(TextOf(channel.Get4thAxisFixtureDirType(i)))},
                  {"axis5", Text(TextOf(channel.Get5thAxisFixtureDirType(i)))},
                  {"offset", VectorJson(OffsetOf(channel, i))},
                  {"axis4Base", VectorJson(Base4thOf(channel, i))},
                  {"axis5Base", VectorJson(Base5thOf(channel, i))}});
  }
  json.Close();
  json.Close();
}

Json ShapeJson(const CQVMShape& shape) {
  return {{"id", shape.GetID()},
          {"name", ToUtf8(shape.GetName())},
          {"parent", ToUtf8(shape.GetParentName())},
          {"parentType", Text(TextOf(shape.m_nParentType))},
          {"path", ToUtf8(shape.m_strPath)},
          {"color", {shape.m_nRed, shape.m_nGreen, shape.m_nBlue}},
          {"visible", shape.m_bVisible != 0},
          {"transparent", shape.m_bTransparent != 0},
          {"housing", shape.m_bHousing != 0},
          {"collisionCheck", shape.m_bCollisionCheck != 0},
          {"metallic", ToUtf8(shape.m_strMetallic)},
          {"offset", VectorJson(shape.m_offset)},
          {"home", VectorJson(shape.m_homeXYZ)},
          {"homeABC", VectorJson(shape.m_homeABC)},
          {"min", VectorJson(shape.m_minXYZ)},
          {"max", VectorJson(shape.m_maxXYZ)},
          {"minABC", VectorJson(shape.m_minABC)},
          {"maxABC", VectorJson(shape.m_maxABC)}};
}

}  // namespace

void PrintMachineTree(KVVMMachine& machine) { Tree(machine).Print(); }

void PrintMachineJson(KVVMMachine& machine) {
  JsonPrinter json;
  json.Add("name", ToUtf8(machine.GetName()));
  json.Add("type", Text(TextOf(machine.GetMachType())));
  json.Add("declaredChannels", machine.GetNumChannels());
  json.Add("declaredShapes", machine.GetNumShapes());
  json.Open("channels", '[');
  for (const auto* channel : ObjectsOf<CQVMChannel>(machine.GetChannels())) PrintChannel(json, *channel);
  json.Close();
  json.Open("shapes", '[');
  for (const auto* shape : ObjectsOf<CQVMShape>(machine.GetShapes())) json.Add({}, ShapeJson(*shape));
  json.Close();
  json.Open("shapeLists", '[');
  for (const ShapeList& list : ListsOf(machine)) {
    json.Open({}, '{');
    json.Add("row", list.row);
    json.Add("axis", Text(TextOf(list.axis)));
    json.Add("fixture", list.fixture < 0 ? Json() : Json(list.fixture + 1));
    json.Open("shapes", '[');
    for (const int id : list.ids) json.AddElement(id);
    json.Close();
    json.Close();
  }
  json.Close();
  json.Close();
}

MachineCounts CountsOf(KVVMMachine& machine) {
  MachineCounts counts;
  for (const auto* channel : ObjectsOf<CQVMChannel>(machine.GetChannels())) {
    ++counts.channels;
    if (channel->GetToolTarget() == MD_TURRET) counts.stations += channel->GetNumStations();
    for (int i = 0; i < CQVMChannel::kFixtures; ++i) counts.fixtures += channel->GetFixtureStatus(i) != 0;
  }
  counts.shapes = machine.GetShapes().GetCount();
  counts.shapeLists = static_cast<long long>(ListsOf(machine).size());
  return counts;
}

std::string MachineSummary(KVVMMachine& machine) {
  const MachineCounts counts = CountsOf(machine);
  return fmt::format("{}, {}, {}, {}, {}", Counted(counts.channels, "channel"), Counted(counts.stations, "station"),
                     Counted(counts.fixtures, "fixture"), Counted(counts.shapes, "shape"),
                     Counted(counts.shapeLists, "shape list"));
}

}  // namespace kestrova
