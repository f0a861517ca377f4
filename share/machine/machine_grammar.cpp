#include "share/machine/internal/machine_grammar.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "share/machine/internal/machine_numbers.h"
#include "share/machine/machine.h"

namespace kvmachine {
namespace {

using Text = std::string_view;

// The index from 0 for an ID from 1; the smallest int is unchanged, to avoid an overflow.
int IndexOf(int id) { return id == std::numeric_limits<int>::min() ? id : id - 1; }

CString PathBelow(const CString& folder, Text utf8) {
  CString path;
  const int length = folder.GetLength();
  const bool ascii = std::all_of(utf8.begin(), utf8.end(), [](char c) { return BYTE(c) < 0x80; });
  if (!ascii) return folder + FromUtf8(utf8);
  TCHAR* units = path.GetBufferSetLength(length + int(utf8.size()));
  std::copy_n(folder.GetString(), length, units);
  std::copy(utf8.begin(), utf8.end(), units + length);
  return path;
}

// For a fixture, the direction also sets the axis vector. V4X and similar attributes are applied later and override it.
void Set4thAxis(Reading& r, CMDirType direction) {
  if (!r.fixtureMode) return r.channel->Set4thAxisToolDirType(direction);
  const FRVector unit = UnitVectorOf(direction);
  r.channel->Set4thAxisFixtureDirType(direction, r.fixture);
  r.channel->SetFixture4thXVector(unit.x(), r.fixture);
  r.channel->SetFixture4thYVector(unit.y(), r.fixture);
  r.channel->SetFixture4thZVector(unit.z(), r.fixture);
}

void Set5thAxis(Reading& r, CMDirType direction) {
  if (!r.fixtureMode) return r.channel->Set5thAxisToolDirType(direction);
  const FRVector unit = UnitVectorOf(direction);
  r.channel->Set5thAxisFixtureDirType(direction, r.fixture);
  r.channel->SetFixture5thXVector(unit.x(), r.fixture);
  r.channel->SetFixture5thYVector(unit.y(), r.fixture);
  r.channel->SetFixture5thZVector(unit.z(), r.fixture);
}

void SetTargetID(Reading& r, int id) {
  if (!r.fixtureMode) return r.channel->SetTurretNum(id);
  r.fixture = IndexOf(id);
  r.channel->SetFixtureStatus(r.fixture, 1);
}

void SetTargetType(Reading& r, TargetType type) {
  r.fixtureMode = type.fixture;
  if (!type.fixture) r.channel->SetToolTarget(type.target);
}

// ---- the rows

constexpr Attribute kMachineAttributes[] = {
    {"VER", [](Reading&, TextVersion) {}},
};

constexpr Attribute kToolAttributes[] = {
    {"NAME", [](Reading& r, Text v) { r.tool->SetName(FromUtf8(v)); }},
    {"POS", [](Reading& r, int v) { r.tool->SetID(v); }},
    {"LOC", [](Reading& r, const FRVector& v) { r.tool->m_location = v; }},
    {"VECTOR_X", [](Reading& r, const FRVector& v) { r.tool->m_vectorX = v; }},
    {"VECTOR_Z", [](Reading& r, const FRVector& v) { r.tool->m_vectorZ = v; }},
};

// Sets one component of the target's fixture; a tool target sets it on the fixture with index 0.
template <void (CQVMChannel::*kSet)(double, int)>
constexpr Set<double> kFixtureReal = [](Reading& r, double v) { (r.channel->*kSet)(v, r.fixture); };

constexpr Attribute kTargetAttributes[] = {
    {"TYPE", SetTargetType},
    {"ID", SetTargetID},
    {"ROT_4TH_ABOUT", Set4thAxis},
    {"ROT_5TH_ABOUT", Set5thAxis},
    {"XOFF", kFixtureReal<&CQVMChannel::SetFixtureXOffset>},
    {"YOFF", kFixtureReal<&CQVMChannel::SetFixtureYOffset>},
    {"ZOFF", kFixtureReal<&CQVMChannel::SetFixtureZOffset>},
    {"V4X", kFixtureReal<&CQVMChannel::SetFixture4thXVector>},
    {"V4Y", kFixtureReal<&CQVMChannel::SetFixture4thYVector>},
    {"V4Z", kFixtureReal<&CQVMChannel::SetFixture4thZVector>},
    {"V5X", kFixtureReal<&CQVMChannel::SetFixture5thXVector>},
    {"V5Y", kFixtureReal<&CQVMChannel::SetFixture5thYVector>},
    {"V5Z", kFixtureReal<&CQVMChannel::SetFixture5thZVector>},
    {"BASE_X_4TH_AXIS", kFixtureReal<&CQVMChannel::SetFixture4thBaseXOffset>},
    {"BASE_Y_4TH_AXIS", kFixtureReal<&CQVMChannel::SetFixture4thBaseYOffset>},
    {"BASE_Z_4TH_AXIS", kFixtureReal<&CQVMChannel::SetFixture4thBaseZOffset>},
    {"BASE_X_5TH_AXIS", kFixtureReal<&CQVMChannel::SetFixture5thBaseXOffset>},
    {"BASE_Y_5TH_AXIS", kFixtureReal<&CQVMChannel::SetFixture5thBaseYOffset>},
    {"BASE_Z_5TH_AXIS", kFixtureReal<&CQVMChannel::SetFixture5thBaseZOffset>},
    {"STATIONS", [](Reading& r, int v) { r.channel->SetNumStations(v); }},
    {"DIAM", [](Reading& r, double v) { r.channel->SetTurretDiam(v); }},
    {"ROT_ABOUT", [](Reading& r, CMDirType v) { r.channel->SetTurretDirType(v); }},
    {"GAUGEX", [](Reading& r, double v) { r.channel->SetToolGaugeX(v); }},
    {"GAUGEY", [](Reading& r, double v) { r.channel->SetToolGaugeY(v); }},
    {"GAUGEZ", [](Reading& r, double v) { r.channel->SetToolGaugeZ(v); }},
};

constexpr Attribute kChannelAttributes[] = {
    {"NAME", [](Reading& r, Text v) { r.channel->SetName(FromUtf8(v)); }},
    {"ID", [](Reading& r, int v) { r.channel->SetChannelNum(v); }},
};

constexpr Attribute kChannelsAttributes[] = {
    {"NUM", [](Reading& r, int v) { r.machine.SetNumChannels(v); }},
};

constexpr Attribute kOffsetAttributes[] = {
    {"X", [](Reading& r, double v) { r.shape->m_offset.set_x(v); }},
    {"Y", [](Reading& r, double v) { r.shape->m_offset.set_y(v); }},
    {"Z", [](Reading& r, double v) { r.shape->m_offset.set_z(v); }},
};

constexpr Attribute kHomeAttributes[] = {
    {"X", [](Reading& r, double v) { r.shape->m_homeXYZ.set_x(v); }},
    {"Y", [](Reading& r, double v) { r.shape->m_homeXYZ.set_y(v); }},
    {"Z", [](Reading& r, double v) { r.shape->m_homeXYZ.set_z(v); }},
    {"A", [](Reading& r, double v) { r.shape->m_homeABC.set_x(v); }},
    {"B", [](Reading& r, double v) { r.shape->m_homeABC.set_y(v); }},
    {"C", [](Reading& r, double v) { r.shape->m_homeABC.set_z(v); }},
};

constexpr Attribute kMinAttributes[] = {
    {"X", [](Reading& r, double v) { r.shape->m_minXYZ.set_x(v); }},
    {"Y", [](Reading& r, double v) { r.shape->m_minXYZ.set_y(v); }},
    {"Z", [](Reading& r, double v) { r.shape->m_minXYZ.set_z(v); }},
    {"A", [](Reading& r, double v) { r.shape->m_minABC.set_x(v); }},
    {"B", [](Reading& r, double v) { r.shape->m_minABC.set_y(v); }},
    {"C", [](Reading& r, double v) { r.shape->m_minABC.set_z(v); }},
};

constexpr Attribute kMaxAttributes[] = {
    {"X", [](Reading& r, double v) { r.shape->m_maxXYZ.set_x(v); }},
    {"Y", [](Reading& r, double v) { r.shape->m_maxXYZ.set_y(v); }},
    {"Z", [](Reading& r, double v) { r.shape->m_maxXYZ.set_z(v); }},
    {"A", [](Reading& r, double v) { r.shape->m_maxABC.set_x(v); }},
    {"B", [](Reading& r, double v) { r.shape->m_maxABC.set_y(v); }},
    {"C", [](Reading& r, double v) { r.shape->m_maxABC.set_z(v); }},
};

void SetMetallic(Reading& r, Text v) {
  r.shape->m_strMetallic = r.metallic.From(v);
  if (!v.empty()) r.shape->m_bMetallic = 1;
}

constexpr Attribute kDisplayAttributes[] = {
    {"RGB",
     [](Reading& r, Colour v) {
       r.shape->m_nRed = v.red;
       r.shape->m_nGreen = v.green;
       r.shape->m_nBlue = v.blue;
     }},
    {"TRANSPARENT", [](Reading& r, Flag v) { r.shape->m_bTransparent = v.value; }},
    {"HOUSING", [](Reading& r, Flag v) { r.shape->m_bHousing = v.value; }},
    {"CCHECK", [](Reading& r, Flag v) { r.shape->m_bCollisionCheck = v.value; }},
    {"VISIBLE", [](Reading& r, Flag v) { r.shape->m_bVisible = v.value; }},
    {"METALLIC", SetMetallic},
};

constexpr Attribute kShapeAttributes[] = {
    {"NAME", [](Reading& r, Text v) { r.shape->SetName(FromUtf8(v)); }},
    {"ID", [](Reading& r, int v) { r.shape->SetID(v); }},
    {"PATH", [](Reading& r, Text v) { r.shape->m_strPath = PathBelow(r.folder, v); }},
    {"PARENT", [](Reading& r, Text v) { r.shape->SetParentName(r.parent.From(v)); }},
    {"PTYPE", [](Reading& r, CMParentType v) { r.shape->m_nParentType = v; }},
};

constexpr Attribute kShapesAttributes[] = {
    {"NUM", [](Reading& r, int v) { r.machine.SetNumShapes(v); }},
};

constexpr Attribute kToolListAttributes[] = {
    {"NUM", [](Reading& r, int v) { r.list.num = v; }},
    {"AXIS", [](Reading& r, CM_AXIS_TYPE v) { r.list.axis = v; }},
    {"CHANNEL", [](Reading& r, int v) { r.list.channel = v; }},
    {"LIST", [](Reading& r, IdList v) { r.list.list = v.text; }},
};

constexpr Attribute kFixtureListAttributes[] = {
    {"NUM", [](Reading& r, int v) { r.list.num = v; }},
    {"AXIS", [](Reading& r, CM_AXIS_TYPE v) { r.list.axis = v; }},
    {"CHANNEL", [](Reading& r, int v) { r.list.channel = v; }},
    {"ID", [](Reading& r, int v) { r.list.fixture = IndexOf(v); }},
    {"LIST", [](Reading& r, IdList v) { r.list.list = v.text; }},
};

// ---- beginnings and ends

bool BeginChannel(Reading& r) {
  if (r.channelsLeft-- <= 0) return false;
  r.channel = new CQVMChannel;
  r.machine.AddChannel(r.channel);
  return true;
}

bool BeginTarget(Reading& r) {
  r.fixtureMode = false;
  r.fixture = 0;
  return true;
}

bool BeginTool(Reading& r) {
  if (r.toolsLeft-- <= 0) return false;
  r.tool = new CQVMToolNode;
  r.channel->AddToolNode(r.tool);
  return true;
}

bool BeginShape(Reading& r) {
  if (r.shapesLeft-- <= 0) return false;
  r.shape = std::make_unique<CQVMShape>();
  return true;
}

void EndShape(Reading& r) { r.machine.AddShape(r.shape.release()); }

bool BeginLists(Reading& r) {
  r.machine.CreateChannelAxisArray();
  return true;
}

bool BeginList(Reading& r) {
  r.list = {};
  return true;
}

void StoreList(Reading& r, CM_TARGET_TYPE target) {
  const std::string_view list = r.list.list;
  std::vector<int> ids;
  ids.reserve(std::min(std::size_t(std::max(r.list.num, 0)), std::size_t(std::ranges::count(list, ',')) + 1));
  int id = 0;
  ForEachListItem(list, r.list.num, [&](Text item, bool repeated) {
    if (repeated && r.repeatsLeft-- <= 0) return false;
    std::size_t used = 0;
    if (!repeated) id = ToInteger(item, used);
    ids.push_back(id);
    return true;
  });
  r.machine.GetShapeMngr()->SetShapeIDs(r.list.channel, r.list.axis, target, r.list.fixture, std::move(ids));
}

void EndToolList(Reading& r) { StoreList(r, CM_TARGET_TOOL); }
void EndFixtureList(Reading& r) { StoreList(r, CM_TARGET_FIXTURE); }

// ---- the elements

constexpr Element kTargetChildren[] = {
    {"TOOL", kToolAttributes, {}, BeginTool},
};
constexpr Element kChannelChildren[] = {
    {"TARGET", kTargetAttributes, kTargetChildren, BeginTarget, nullptr, /*tableOrder=*/true},
};
constexpr Element kChannelsChildren[] = {
    {"CHANNEL", kChannelAttributes, kChannelChildren, BeginChannel},
};
constexpr Element kShapeChildren[] = {
    {"OFFSET", kOffsetAttributes, {}},         //
    {"ORIGIN_OFFSET", kOffsetAttributes, {}},  // the same field; the later element overrides
    {"HOME", kHomeAttributes, {}},             //
    {"MIN", kMinAttributes, {}},               //
    {"MAX", kMaxAttributes, {}},               //
    {"DISPLAY", kDisplayAttributes, {}},
};
constexpr Element kShapesChildren[] = {
    {"SHAPE", kShapeAttributes, kShapeChildren, BeginShape, EndShape},
};
constexpr Element kListsChildren[] = {
    {"TOOLSHAPELIST", kToolListAttributes, {}, BeginList, EndToolList},
    {"FIXTURESHAPELIST", kFixtureListAttributes, {}, BeginList, EndFixtureList},
};
constexpr Element kRootChildren[] = {
    {"MACHINE", kMachineAttributes, {}},
    {"CHANNELS", kChannelsAttributes, kChannelsChildren},
    {"SHAPES", kShapesAttributes, kShapesChildren},
    {"SHAPELISTS", {}, kListsChildren, BeginLists},
};
constexpr Element kRoot = {"", {}, kRootChildren};

static_assert(std::size(kTargetAttributes) <= kMostAttributesOfElement);

char Upper(char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; }

}  // namespace

const Element& RootElement() { return kRoot; }

const Element* FindChild(const Element& parent, std::string_view name) {
  for (const Element& child : parent.children) {
    if (std::equal(name.begin(), name.end(), child.name.begin(), child.name.end(),
                   [](char a, char b) { return Upper(a) == b; })) {
      return &child;
    }
  }
  return nullptr;
}

const Attribute* FindAttribute(const Element& element, std::string_view name) {
  const auto found = std::find_if(element.attributes.begin(), element.attributes.end(),
                                  [&](const Attribute& row) { return row.name == name; });
  return found == element.attributes.end() ? nullptr : &*found;
}

FRVector UnitVectorOf(CMDirType direction) {
  switch (direction) {
    case CM_DIR_PLUS_X: return {1, 0, 0};
    case CM_DIR_PLUS_Y: return {0, 1, 0};
    case CM_DIR_PLUS_Z: return {0, 0, 1};
    case CM_DIR_MINUS_X: return {-1, 0, 0};
    case CM_DIR_MINUS_Y: return {0, -1, 0};
    case CM_DIR_MINUS_Z: return {0, 0, -1};
    case CM_DIR_NONE: break;
  }
  return {};
}

}  // namespace kvmachine
