// The reader, attribute by attribute: the value in the model for each text.
#include <cmath>
#include <cstdlib>
#include <random>

#include "framework/block_pool.h"
#include "share/machine/machine_reader.h"
#include "tests/machine/definition.h"
#include "tests/scratch.h"
#include "tests/values.h"

namespace {

using kvtest::Load;
using kvtest::LoadChannel;
using kvtest::LoadShape;
using kvtest::Values;

double RealOf(const std::string& text) {
  KVVMMachine machine;
  return LoadChannel(machine, "<TARGET DIAM='" + text + "'/>").GetTurretDiam();
}

TEST(MachineReader, ReadsReals) {
  constexpr std::pair<const char*, double> kCases[] = {
      {"12,5", 12.5},  {",5", 0.0},     {"1,2,3", 1.2},    {"250000", 1e5},  {"-250000", -1e5},
      {"100000", 1e5}, {"1e400", 1e5},  {"inf", 1e5},      {"-1e400", -1e5}, {"1e-400", 0.0},
      {"-inf", -1e5},  {"0x1p4", 16.0}, {" \t7.5mm", 7.5}, {"0x", 0.0},
  };
  for (const auto& [text, value] : kCases) EXPECT_EQ(RealOf(text), value) << text;
  EXPECT_EQ(RealOf(""), 0.0);
  EXPECT_EQ(RealOf("123456789012345678e-15"), 123.45678901234568);
  EXPECT_EQ(RealOf("1e99999999999999999999"), 1e5);
  EXPECT_EQ(RealOf("0.000000000000000000000000001e30"), 1000.0);
}

TEST(MachineReader, ReadsRandomRealsAsTheCLibraryDoes) {
  std::mt19937 random(kvtest::PrintedSeed());
  const std::string alphabet = "0123456789012345678901234567890.-+eEx ";
  for (int i = 0; i < 3000; ++i) {
    std::string text;
    for (unsigned n = random() % 24; n-- > 0;) text += alphabet[random() % alphabet.size()];
    const double expected = std::min(std::max(std::strtod(text.c_str(), nullptr), -1e5), 1e5);
    ASSERT_EQ(RealOf(text), expected) << '"' << text << '"';
  }
}

TEST(MachineReader, ReadsIntegers) {
  const auto read = [](const std::string& text) {
    KVVMMachine machine;
    return LoadChannel(machine, "<TARGET STATIONS='" + text + "'/>").GetNumStations();
  };
  constexpr std::pair<const char*, int> kCases[] = {
      {"7", 7}, {" -7x", -7}, {"+7", 7}, {"", 0}, {"x", 0}, {"3.9", 3}, {"+-1", 0}, {"0x10", 0},
  };
  for (const auto& [text, value] : kCases) EXPECT_EQ(read(text), value) << text;
  EXPECT_EQ(read("99999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(read("-99999999999"), std::numeric_limits<int>::min());
}

TEST(MachineReader, ScansThreeRealsInSinglePrecision) {
  const std::pair<const char*, FRVector> kCases[] = {
      {"1 2 3", {1, 2, 3}}, {"1,5 2 3", {1, 0, 0}},         {"0.1 0 .5", {0.1f, 0, 0.5}},   {"1-2-3", {1, -2, -3}},
      {"1 x 3", {1, 0, 0}}, {"250000 0 0", {250000, 0, 0}}, {"16777217", {16777216, 0, 0}}, {"", {0, 0, 0}}};
  for (const auto& [text, wanted] : kCases) {
    KVVMMachine machine;
    const CQVMChannel& channel = LoadChannel(machine, "<TARGET><TOOL LOC='" + std::string(text) + "'/></TARGET>");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(channel.GetAttachLocation(1)[i], wanted[i]) << text;
  }
}

TEST(MachineReader, ComparesElementNamesWithoutCaseAndValuesWithIt) {
  KVVMMachine machine;
  Load(machine, "<channels NUM='1'><Channel ID='1'><tArget TYPE='fixture' ID='1'/></Channel></channels>");
  ASSERT_NE(machine.GetChannel(1), nullptr);
  EXPECT_EQ(machine.GetChannel(1)->GetToolTarget(), MD_TURRET_NONE);
  EXPECT_EQ(machine.GetChannel(1)->GetFixtureStatus(0), 0);
  Load(machine, "<CHANNELS num='5'/>");
  EXPECT_EQ(machine.GetNumChannels(), 1) << "an attribute name of another case is another attribute";
}

TEST(MachineReader, MapsTargetTypes) {
  constexpr std::pair<const char*, int> kCases[] = {
      {"Turret", 0},      {"Horiz Head", 1},  {"Vert Head", 2}, {"Rail", 3},   {"Other", 4},
      {"TurretAHead", 5}, {"TurretBHead", 5}, {"Head", 8},      {"turret", 5}, {"", 5}};
  for (const auto& [text, value] : kCases) {
    KVVMMachine machine;
    const std::string targets = "<TARGET TYPE='Rail'/><TARGET TYPE='" + std::string(text) + "'/>";
    EXPECT_EQ(LoadChannel(machine, targets).GetToolTarget(), value) << text;
  }
  KVVMMachine machine;
  EXPECT_EQ(LoadChannel(machine, "<TARGET TYPE='Rail'/><TARGET TYPE='Fixture'/><TARGET/>").GetToolTarget(), 3)
      << "a fixture and a target without TYPE leave the tool target as it is";
}

TEST(MachineReader, DirectionOfAFixturesAxisGivesItsVectorToo) {
  const char* const directions[] = {"+X", "+Y", "+Z", "-X", "-Y", "-Z", "Z"};
  for (int i = 0; i < 7; ++i) {
    KVVMMachine machine;
    const std::string text = directions[i];
    const CQVMChannel& channel = LoadChannel(machine, "<TARGET V4X='0,25' ROT_4TH_ABOUT='" + text +
                                                          "' ROT_5TH_ABOUT='" + text + "' ID='2' TYPE='Fixture'/>");
    EXPECT_EQ(Values(channel.GetFixtureStatus(0), channel.GetFixtureStatus(1), channel.Get4thAxisFixtureDirType(1),
                     channel.Get5thAxisFixtureDirType(1)),
              Values(0, 1, i, i));
    double unit[3] = {};
    if (i < 6) unit[i % 3] = i < 3 ? 1 : -1;
    // V4X is set last, although it is first in the file.
    EXPECT_EQ(Values(channel.GetFixture4thXVector(1), channel.GetFixture4thYVector(1), channel.GetFixture4thZVector(1),
                     channel.GetFixture5thXVector(1), channel.GetFixture5thYVector(1), channel.GetFixture5thZVector(1)),
              Values(0.25, unit[1], unit[2], unit[0], unit[1], unit[2]))
        << text;
  }
}

TEST(MachineReader, TargetThatIsNoFixtureSetsFixtureValuesOfIndexZero) {
  KVVMMachine machine;
  const CQVMChannel& channel = LoadChannel(machine, "<TARGET TYPE='Turret' ID='9' XOFF='5' ROT_5TH_ABOUT='-Y'/>");
  EXPECT_EQ(Values(channel.GetTurretNum(), channel.GetFixtureXOffset(0), channel.GetFixtureStatus(0)), "9|5|0");
  EXPECT_EQ(Values(channel.Get5thAxisToolDirType(), channel.Get5thAxisFixtureDirType(0)),
            Values(CM_DIR_MINUS_Y, CM_DIR_NONE));
}

TEST(MachineReader, FixtureIdsOutOfRangeChangeNothing) {
  for (const char* id : {"0", "3", "-2147483648", "2147483647", "x"}) {
    KVVMMachine machine;
    const std::string target =
        "<TARGET TYPE='Fixture' ID='" + std::string(id) + "' XOFF='1' ROT_4TH_ABOUT='+X' ROT_5TH_ABOUT='+X'/>";
    const CQVMChannel& channel = LoadChannel(machine, target);
    for (int i = -1; i < 4; ++i)
      EXPECT_EQ(Values(channel.GetFixtureStatus(i), channel.GetFixtureXOffset(i), channel.Get4thAxisFixtureDirType(i),
                       channel.Get5thAxisFixtureDirType(i)),
                Values(0, 0.0, CM_DIR_NONE, CM_DIR_NONE))
          << id;
  }
}

TEST(MachineReader, ReadsAShape) {
  KVVMMachine machine;
  const CQVMShape& shape = LoadShape(
      machine, "NAME='Tür' ID='4' PATH='body.stl' PARENT='Bett' PTYPE='Front2'",
      "<OFFSET X='1' Y='2' Z='3'/><ORIGIN_OFFSET Y='7'/><MIN A='-1' Z='-2'/><MAX C='3'/><other/><HOME Y='1' X='2' "
      "Y='3'/><DISPLAY RGB='1 2 300' TRANSPARENT='TRUE' HOUSING='true' CCHECK='TRUE' VISIBLE='no' METALLIC='Steel'/>");
  EXPECT_EQ(Values(shape.GetName(), shape.GetID(), shape.m_strPath, shape.GetParentName(), shape.m_nParentType),
            Values("T\u00FCr", 4, "C:\\M\\Mill\\VMC\\body.stl", "Bett", CM_PARENT_FRONT2));
  EXPECT_EQ(shape.m_offset.x(), 1.0);
  EXPECT_EQ(shape.m_offset.y(), 7.0) << "the later of OFFSET and ORIGIN_OFFSET wins, component by component";
  EXPECT_EQ(Values(shape.m_minABC.x(), shape.m_minXYZ.z(), shape.m_maxABC.z(), shape.m_homeXYZ.x()), "-1|-2|3|2");
  EXPECT_EQ(shape.m_homeXYZ.y(), 1.0) << "the first of two attributes of one name counts";
  EXPECT_EQ(shape.m_nBlue, 300) << "colours are kept as written";
  EXPECT_EQ(Values(shape.m_bTransparent, shape.m_bHousing, shape.m_bCollisionCheck, shape.m_bVisible, shape.m_bMetallic,
                   shape.m_strMetallic),
            "1|0|1|0|1|Steel");
}

TEST(MachineReader, DeclaredCountsStandAcrossLoadsAndNeedNotAgree) {
  KVVMMachine machine;
  Load(machine, "<CHANNELS NUM='7'><CHANNEL/></CHANNELS><SHAPES NUM='9'/>");
  Load(machine, "<CHANNELS><CHANNEL/><CHANNEL/></CHANNELS>");
  EXPECT_EQ(Values(machine.GetNumChannels(), machine.GetNumShapes(), machine.GetChannels().GetCount()), "7|9|2");
  EXPECT_EQ(machine.GetFirstShape(), nullptr);
}

TEST(MachineReader, ReadsShapeLists) {
  const std::pair<const char*, std::vector<int>> kCases[] = {
      {"NUM='3' LIST='4,7,9'", {4, 7, 9}}, {"NUM='2' LIST='4,7,9'", {4, 7}}, {"NUM='4' LIST='5,7'", {5, 7, 7, 7}},
      {"NUM='4' LIST='5,7,'", {5, 7}},     {"NUM='3' LIST=',5'", {0, 0, 0}}, {"NUM='3' LIST='5,,7'", {5, 0, 0}},
      {"NUM='2' LIST=' 5 , x7'", {5, 0}},  {"NUM='0' LIST='5,7'", {}},       {"NUM='-1' LIST='5,7'", {}}};
  const auto expect = [](const std::string& attributes, const std::vector<int>& wanted) {
    KVVMMachine machine;
    Load(machine, "<CHANNELS NUM='1'><CHANNEL/></CHANNELS><SHAPELISTS><TOOLSHAPELIST CHANNEL='1' AXIS='B' " +
                      attributes + "/></SHAPELISTS>");
    std::vector<int> ids(std::size_t(machine.GetShapeMngr()->GetToolShapeArray(0, CM_AXIS_B, nullptr)));
    machine.GetShapeMngr()->GetToolShapeArray(0, CM_AXIS_B, ids.data());
    EXPECT_EQ(ids, wanted) << attributes;
  };
  for (const auto& [attributes, ids] : kCases) expect(attributes, ids);
  for (const char* attributes : {"LIST='5,7'", "NUM='2' LIST=''", "NUM='2'"}) expect(attributes, {});
}

TEST(MachineReader, HostileCountsStayBounded) {
  KVVMMachine machine;
  const std::size_t blocks = BlockPool::TakenByThisThread();
  Load(machine,
       "<CHANNELS NUM='1'><CHANNEL/></CHANNELS><SHAPELISTS>"
       "<TOOLSHAPELIST NUM='2000000000' LIST='5,7'/><TOOLSHAPELIST AXIS='X' NUM='2000000000' LIST='5,7'/>"
       "</SHAPELISTS>");
  EXPECT_EQ(machine.GetShapeMngr()->GetToolShapeArray(0, CM_AXIS_Z, nullptr), kMachineMostRepeatedIds + 2);
  EXPECT_EQ(machine.GetShapeMngr()->GetToolShapeArray(0, CM_AXIS_X, nullptr), 2);
  EXPECT_LT(BlockPool::TakenByThisThread() - blocks, 100U) << "no object for each ID";
}

}  // namespace
