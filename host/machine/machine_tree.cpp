#include "host/machine/machine_tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
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
  int fixture;  // index, or -1 for the tool
  std::vector<int> ids;
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
        lists.push_back({row, at, fixture, {shapes->GetIDs(), shapes->GetIDs() + shapes->GetCount()}});
      }
    }
  }
  return lists;
}

// ---- text

class Tree {
 public:
  explicit Tree(KVVMMachine& machine) : machine_(machine) {}

  std::string Write() {
    Line(0, "{} ({}), {}", ToUtf8(machine_.GetName()), TextOf(machine_.GetMachType()), MachineSummary(machine_));
    for (const auto* channel : ObjectsOf<CQVMChannel>(machine_.GetChannels())) WriteChannel(*channel);
    WriteShapes();
    WriteLists();
    return std::move(out_);
  }

 private:
  template <class... Values>
  void Line(int depth, fmt::format_string<Values...> format, Values&&... values) {
    out_.append(std::size_t(std::min(depth, kDeepestIndent)) * 2, ' ');
    const std::size_t begin = out_.size();
    fmt::format_to(std::back_inserter(out_), format, std::forward<Values>(values)...);
    MakeHarmless(out_, begin);
    out_ += '\n';
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
    const auto shapes = ObjectsOf<CQVMShape>(machine_.GetShapes());
    if (!shapes.empty()) Line(1, "shapes");
    std::map<CString, const CQVMShape*> named;
    for (const auto* shape : shapes) named.emplace(shape->GetName(), shape);
    std::multimap<const CQVMShape*, const CQVMShape*> children;
    for (const auto* shape : shapes) {
      const auto parent = named.find(shape->GetParentName());
      const bool hangs = !shape->GetParentName().IsEmpty() && parent != named.end() && parent->second != shape;
      children.emplace(hangs ? parent->second : nullptr, shape);
    }
    std::map<const CQVMShape*, bool> written;
    std::vector<std::pair<const CQVMShape*, int>> open;
    const auto push = [&](const CQVMShape* parent, int depth) {
      const auto [first, last] = children.equal_range(parent);
      const auto from = std::ptrdiff_t(open.size());
      for (auto at = first; at != last; ++at) open.emplace_back(at->second, depth);
      std::reverse(open.begin() + from, open.end());
    };
    const auto writeOpen = [&] {
      while (!open.empty()) {
        const auto [shape, depth] = open.back();
        open.pop_back();
        if (std::exchange(written[shape], true)) continue;
        WriteShape(*shape, depth);
        push(shape, depth + 1);
      }
    };
    push(nullptr, 2);
    writeOpen();
    for (const auto* shape : shapes) {
      if (written[shape]) continue;
      open.emplace_back(shape, 2);
      writeOpen();
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
  std::string out_;
};

// ---- JSON

Json ChannelJson(const CQVMChannel& channel) {
  Json stations = Json::array();
  for (const auto* node : ObjectsOf<CQVMToolNode>(channel.GetToolNodes())) {
    stations.push_back({{"position", node->GetID()},
                        {"name", ToUtf8(node->GetName())},
                        {"location", VectorJson(node->m_location)},
                        {"vectorX", VectorJson(node->m_vectorX)},
                        {"vectorZ", VectorJson(node->m_vectorZ)}});
  }
  Json fixtures = Json::array();
  for (int i = 0; i < CQVMChannel::kFixtures; ++i) {
    if (!channel.GetFixtureStatus(i)) continue;
    fixtures.push_back({{"id", i + 1},
                        {"axis4", Text(TextOf(channel.Get4thAxisFixtureDirType(i)))},
                        {"axis5", Text(TextOf(channel.Get5thAxisFixtureDirType(i)))},
                        {"offset", VectorJson(OffsetOf(channel, i))},
                        {"axis4Base", VectorJson(Base4thOf(channel, i))},
                        {"axis5Base", VectorJson(Base5thOf(channel, i))}});
  }
  return {{"number", channel.GetChannelNum()},
          {"name", ToUtf8(channel.GetName())},
          {"target", Text(TextOf(channel.GetToolTarget()))},
          {"turret", channel.GetTurretNum()},
          {"stationCount", channel.GetNumStations()},
          {"diameter", channel.GetTurretDiam()},
          {"direction", Text(TextOf(channel.GetTurretDirType()))},
          {"gauge", {channel.GetToolGaugeX(), channel.GetToolGaugeY(), channel.GetToolGaugeZ()}},
          {"stations", stations},
          {"fixtures", fixtures}};
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

std::string MachineTree(KVVMMachine& machine) { return Tree(machine).Write(); }

Json MachineJson(KVVMMachine& machine) {
  Json channels = Json::array();
  for (const auto* channel : ObjectsOf<CQVMChannel>(machine.GetChannels())) channels.push_back(ChannelJson(*channel));
  Json shapes = Json::array();
  for (const auto* shape : ObjectsOf<CQVMShape>(machine.GetShapes())) shapes.push_back(ShapeJson(*shape));
  Json lists = Json::array();
  for (const ShapeList& list : ListsOf(machine)) {
    lists.push_back({{"row", list.row},
                     {"axis", Text(TextOf(list.axis))},
                     {"fixture", list.fixture < 0 ? Json() : Json(list.fixture + 1)},
                     {"shapes", list.ids}});
  }
  return {{"name", ToUtf8(machine.GetName())},
          {"type", Text(TextOf(machine.GetMachType()))},
          {"declaredChannels", machine.GetNumChannels()},
          {"declaredShapes", machine.GetNumShapes()},
          {"channels", channels},
          {"shapes", shapes},
          {"shapeLists", lists}};
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

std::string Counted(long long count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string MachineSummary(KVVMMachine& machine) {
  const MachineCounts counts = CountsOf(machine);
  return fmt::format("{}, {}, {}, {}, {}", Counted(counts.channels, "channel"), Counted(counts.stations, "station"),
                     Counted(counts.fixtures, "fixture"), Counted(counts.shapes, "shape"),
                     Counted(counts.shapeLists, "shape list"));
}

}  // namespace kestrova
