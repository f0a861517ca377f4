// The model and the shape table through their operations.
#include "platform/paths.h"
#include "share/settings/settings_key.h"
#include "tests/machine/definition.h"
#include "tests/registered.h"
#include "tests/scratch.h"

namespace {

using kvtest::Load;

constexpr char kThreeChannels[] =
    "<CHANNELS NUM='2'><CHANNEL ID='0' NAME='zero'/><CHANNEL ID='2' NAME='two'/><CHANNEL ID='3' "
    "NAME='three'/></CHANNELS>";

TEST(MachineModel, FindsChannelsByNumberUpToTheDeclaredCount) {
  KVVMMachine machine;
  Load(machine, kThreeChannels);
  EXPECT_EQ(machine.GetChannel(0)->GetName(), _T("zero"));
  EXPECT_EQ(machine.GetChannel(2)->GetName(), _T("two"));
  EXPECT_EQ(machine.GetChannel(1), nullptr);
  EXPECT_EQ(machine.GetChannel(3), nullptr);
  machine.SetNumChannels(1);
  for (const int number : {-5, 0, 1, 3, 99}) EXPECT_EQ(machine.GetChannel(number)->GetName(), _T("zero")) << number;
  machine.DeleteAll();
  EXPECT_EQ(machine.GetChannel(1), nullptr);
  EXPECT_EQ(machine.GetNumChannels(), 1);
}

TEST(MachineModel, SearchMovesTheWalksCursor) {
  KVVMMachine machine;
  Load(machine, "<SHAPES NUM='3'><SHAPE ID='1'/><SHAPE ID='2'/><SHAPE ID='3'/></SHAPES>");
  EXPECT_EQ(machine.GetFirstShape()->GetID(), 1);
  EXPECT_EQ(machine.GetShapeByID(2)->GetID(), 2);
  EXPECT_EQ(machine.GetNextShape()->GetID(), 3);
  EXPECT_EQ(machine.GetNextShape(), nullptr);
  EXPECT_TRUE(!machine.GetShapeByID(9) && !machine.GetNextShape());
}

TEST(MachineModel, ToolVectorIsReversedByAGaugeOfZeroOrMore) {
  CQVMChannel channel;
  auto* node = new CQVMToolNode;
  node->m_vectorX = FRVector(1, 2, 3);
  channel.AddToolNode(node);
  channel.AddToolNode(nullptr);
  for (const auto& [gauge, x] : {std::pair(-1.0, 1.0), {0.0, -1.0}, {1.0, -1.0}}) {
    channel.SetToolGaugeX(gauge);
    EXPECT_EQ(channel.GetToolVectorX(1).x(), x) << gauge;
    EXPECT_EQ(channel.GetAttachVectorX(1).x(), 1.0);
    EXPECT_EQ(channel.GetAttachVectorX(7).x(), 0.0);
  }
}

TEST(MachineModel, FrontTurretFlagNeedsTheNameFirst) {
  for (const auto& [name, flag] : {std::pair(_T("front1"), 1), {_T("FRONT2"), 1}, {_T("Front3"), 0}}) {
    CQVMChannel channel;
    channel.SetName(name);
    channel.SetToolTarget(MD_TURRET);
    EXPECT_EQ(channel.GetIsFrontTurret(), flag);
    channel.SetName(_T("Rear1"));
    channel.SetToolTarget(MD_TURRET);
    EXPECT_EQ(channel.GetIsFrontTurret(), flag) << "never cleared";
  }
}

// ---- loading from disk

QFSettingsKey* g_settings = nullptr;

TEST(MachineModel, LoadsFromTheFolderOfTheSetting) {
  const kvtest::ScratchFolder folder;
  folder.Write("MillTurn/Twin/KestrovaAPT.xml", "<a><CHANNELS NUM='1'><CHANNEL/></CHANNELS></a>");
  kvtest::Register({.appSettings = [] { return g_settings; }});
  KVVMMachine machine;
  CString name(_T("Twin"));
  EXPECT_EQ(machine.LoadMachine(VM_MACHINE_MILLTURN, name), 0);
  EXPECT_EQ(machine.GetLoadFailure().kind, MachineLoadFailure::Kind::kNoSettings);
  EXPECT_EQ(machine.GetName(), name) << "type and name are stored all the same";

  QFSettingsKey settings;
  settings.AddValue(_T("SimulationMachinePath"), CString(ProductPathFromSystem(folder.Path().string()).c_str()));
  g_settings = &settings;
  EXPECT_EQ(machine.LoadMachine(VM_MACHINE_MILLTURN, name), 1);
  EXPECT_EQ(machine.GetChannels().GetCount(), 1);
  EXPECT_EQ(machine.GetPersistentPath().Right(15), _T("\\MillTurn\\Twin\\"));

  CString none;
  EXPECT_EQ(machine.LoadMachine(VM_MACHINE_MILLTURN, none), 0);
  EXPECT_EQ(machine.GetChannels().GetCount(), 0);
  CString missing(_T("Nobody"));
  EXPECT_EQ(machine.LoadMachine(VM_MACHINE_MILLTURN, missing), 0);
  EXPECT_EQ(machine.GetLoadFailure().xml.kind, KVXMLFailure::Kind::kMissing);
  g_settings = nullptr;
}

TEST(MachineModel, ChecksForTheCheckFile) {
  const kvtest::ScratchFolder folder;
  folder.Write("Twin/Twin.mdinf", "");
  CString path(ProductPathFromSystem(folder.Path().string() + "/").c_str()), there(_T("Twin")), missing(_T("Nobody"));
  KVVMMachine machine;
  EXPECT_EQ(machine.ValidMachine(VM_MACHINE_MILL, path, there, 1), 1);
  EXPECT_EQ(machine.ValidMachine(VM_MACHINE_MILL, path, missing, 1), 0);
  EXPECT_EQ(machine.ValidMachine(VM_MACHINE_MILL, path, missing, 0), 1);
}

// ---- shape table

int Add(KVVMShapeMngr& table, int channel, int target, int id, std::initializer_list<int> ids, int* left = nullptr) {
  CObList list;
  for (const int value : ids) list.AddTail(new KVVMShapeInfo(value));
  const int result = table.AddShapeRef(channel, CM_AXIS_Z, CM_TARGET_TYPE(target), id, list);
  if (left) *left = int(list.GetCount());
  while (!list.IsEmpty()) delete list.RemoveHead();
  return result;
}

std::vector<int> Tool(const KVVMShapeMngr& table, int channel) {
  std::vector<int> ids(std::size_t(table.GetToolShapeArray(channel, CM_AXIS_Z, nullptr)));
  EXPECT_EQ(table.GetToolShapeArray(channel, CM_AXIS_Z, ids.data()), int(ids.size()));
  return ids;
}

TEST(ShapeTable, StoresReplacesAndFolds) {
  using Ids = std::vector<int>;
  KVVMShapeMngr table;
  EXPECT_EQ(Add(table, 0, 0, 0, {1}), 0) << "no table yet";
  EXPECT_EQ(table.CreateChannelAxisArray(0), 0);
  EXPECT_EQ(table.CreateChannelAxisArray(2), 1);
  int left = -1;
  EXPECT_EQ(Add(table, 5, 0, 0, {1, 2}, &left), 0);
  EXPECT_EQ(left, 0);
  EXPECT_EQ(Add(table, 1, 0, 0, {1, 2}, &left), 1);
  EXPECT_EQ(left, 0);
  EXPECT_EQ(Tool(table, 1), (Ids{1, 2}));
  EXPECT_EQ(Add(table, 2, 0, 0, {3}), 1);
  EXPECT_EQ(Tool(table, 1), (Ids{3})) << "channel 2 of 2 replaces channel 1";
  EXPECT_EQ(Add(table, 1, 0, 0, {}), 0);
  EXPECT_EQ(Tool(table, 1), (Ids{3})) << "an empty list clears nothing";
  EXPECT_EQ(Add(table, 1, 4, 0, {8, 9}, &left), 1);
  EXPECT_EQ(left, 2) << "no target: the list keeps its entries";
  EXPECT_EQ(Tool(table, 2), Ids{}) << "reading folds nothing";
  for (const int channel : {-1, 3, 2147483647}) EXPECT_EQ(Add(table, channel, 0, 0, {1}), 0) << channel;
  for (const int id : {-1, 3}) EXPECT_EQ(Add(table, 0, 1, id, {1}), 0) << id;
  EXPECT_EQ(Add(table, 0, 3, 0, {1}), 0);
  table.DeleteChannelAxisArray();
  EXPECT_EQ(table.GetChannelCount(), 2);
  EXPECT_EQ(Tool(table, 1), Ids{});
}

TEST(ShapeTable, CountsFixturesInTwoWays) {
  KVVMShapeMngr table;
  table.CreateChannelAxisArray(2);
  for (int i = 0; i < 3; ++i) Add(table, 0, 1, i, {10 + i});
  // 3 is refused before 1 is subtracted.
  const std::tuple<int, int, int> rows[] = {{1, 0, 10}, {2, 0, 11}, {3, 0, 0},  {0, 0, 0},
                                            {2, 1, 12}, {3, 1, 0},  {-1, 1, 0}, {-2147483647 - 1, 0, 0}};
  for (const auto& [number, zeroBased, wanted] : rows) {
    int id[1] = {0};
    EXPECT_EQ(table.GetFixtureShapeArray(0, CM_AXIS_Z, number, id, zeroBased) ? id[0] : 0, wanted)
        << number << " " << zeroBased;
  }
}

TEST(ShapeTable, OneRowAnswersForEveryChannel) {
  KVVMShapeMngr table;
  table.CreateChannelAxisArray(1);
  EXPECT_EQ(Add(table, 1, 0, 0, {4}), 1);
  EXPECT_EQ(Tool(table, 9), std::vector<int>{4});
}

TEST(ShapeTable, NamesAxesByMoveAndDirection) {
  KVVMShapeMngr table;
  table.CreateChannelAxisArray(2);
  const auto add = [&](int channel, CM_MOVE_TYPE move, CM_SHAPE_DIR_TYPE direction, int id) {
    CObList list;
    list.AddTail(new KVVMShapeInfo(id));
    return table.AddShapeRef(channel, move, direction, CM_TARGET_TOOL, 0, list);
  };
  EXPECT_EQ(add(0, CM_MOVE_ROTARY, CM_SHAPE_DIR_Y, 5), 1);
  EXPECT_EQ(add(0, CM_MOVE_LINEAR, CM_SHAPE_DIR_Y, 6), 1);
  EXPECT_EQ(add(2, CM_MOVE_LINEAR, CM_SHAPE_DIR_Y, 7), 0) << "a channel equal to the count is not folded here";
  int id = 0;
  EXPECT_EQ(table.GetToolShapeArray(0, CM_AXIS_B, &id), 1);
  EXPECT_EQ(id, 5);
  EXPECT_EQ(table.GetToolShapeArray(0, CM_AXIS_Y, &id), 1);
  EXPECT_EQ(id, 6);
}

}  // namespace
