// The export's rules one by one, as exact text, and the export of every example machine, byte for byte.
#include <bit>
#include <random>

#include "tests/folders.h"
#include "tests/machine/definition.h"
#include "tests/scratch.h"

namespace {

// A shape and its two lines, so that there is something to export.
#define SHAPE "<SHAPES NUM='1'><SHAPE NAME='S' ID='1'/></SHAPES>"
#define SHAPE_LINES "SHAPE NAME=S ID=1 PARENT= PTYPE=Fixed RGB(128,128,128)\nPATH=\n"
#define ONE(content) "<CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'>" content "</CHANNEL></CHANNELS>" SHAPE
#define OF_SHAPE(content) "<CHANNELS NUM='1'/><SHAPES NUM='1'><SHAPE NAME='S' ID='1'>" content "</SHAPE></SHAPES>"
#define LISTS(channels, lists) channels SHAPE "<SHAPELISTS>" lists "</SHAPELISTS>"
#define TWO "<CHANNELS NUM='2'><CHANNEL ID='1'/><CHANNEL ID='2'/></CHANNELS>"

const std::tuple<const char*, const char*, const char*> kCases[] = {
    {"no channels", "<CHANNELS NUM='0'><CHANNEL/></CHANNELS>" SHAPE, ""},
    {"no shapes", "<CHANNELS NUM='3'><CHANNEL/></CHANNELS><SHAPES NUM='0'><SHAPE/></SHAPES>", ""},
    {"negative counts",
     "<CHANNELS NUM='-2'><CHANNEL ID='0'><TARGET TYPE='Rail'/></CHANNEL></CHANNELS><SHAPES NUM='-1'/>",
     "CHANNELS=-2\n"},
    {"a channel without target", ONE(""), "CHANNELS=1\n" SHAPE_LINES},
    {"one channel is always 1",
     "<CHANNELS NUM='1'><CHANNEL ID='7' NAME='F'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>" SHAPE,
     "CHANNELS=1\nCHANNEL F ID=1 TARGET=Head \n" SHAPE_LINES},
    {"numbers outside 0 to count are left out, the rest sorted, the first of equals",
     "<CHANNELS NUM='2'><CHANNEL ID='2' NAME='b'><TARGET TYPE='Head'/></CHANNEL><CHANNEL ID='3'><TARGET TYPE='Head'/>"
     "</CHANNEL><CHANNEL ID='-1'><TARGET TYPE='Head'/></CHANNEL><CHANNEL ID='0' NAME='a'><TARGET "
     "TYPE='Head'/></CHANNEL><CHANNEL ID='2' NAME='c'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>" SHAPE,
     "CHANNELS=2\nCHANNEL a ID=0 TARGET=Head \nCHANNEL b ID=2 TARGET=Head \n" SHAPE_LINES},
    {"a count of two thousand million",
     "<CHANNELS NUM='2000000000'><CHANNEL ID='5' NAME='a'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>" SHAPE,
     "CHANNELS=2000000000\nCHANNEL a ID=5 TARGET=Head \n" SHAPE_LINES},
    {"a rail leaves the line open", ONE("<TARGET TYPE='Rail' GAUGEX='5'/><TARGET TYPE='Fixture' ID='1'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Rail CHANNEL Main ID=1 TARGET=Fixture ID=1 \n" SHAPE_LINES},
    {"a turret without tools", ONE("<TARGET TYPE='Turret' STATIONS='3' DIAM='12,5' ROT_ABOUT='-X'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Turret STATIONS=3 DIAM=12.500 GAUGEX=0.000 ROT_ABOUT=-X \n" SHAPE_LINES},
    {"a turret with one tool of three",
     ONE("<TARGET TYPE='Turret' STATIONS='3' GAUGEX='-1'><TOOL VECTOR_X='0 1 0' LOC='1 2 3'/></TARGET>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Turret STATIONS=3 DIAM=0.000 GAUGEX=-1.000 ROT_ABOUT=+Z \n"
     "STATION=1 LOC=1.000 2.000 3.000 TOOL_VECX=0.000 1.000 0.000 \n"
     "STATION=2 LOC=0.000 0.000 0.000 TOOL_VECX=0.000 0.000 0.000 \n"
     "STATION=3 LOC=0.000 0.000 0.000 TOOL_VECX=0.000 0.000 0.000 \n" SHAPE_LINES},
    {"a gauge of 0 reverses; the first of two tools at a station counts",
     ONE("<TARGET TYPE='Turret' STATIONS='1'><TOOL POS='2'/><TOOL VECTOR_X='1 2 3'/><TOOL VECTOR_X='9 9 9'/></TARGET>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Turret STATIONS=1 DIAM=0.000 GAUGEX=0.000 ROT_ABOUT=+Z \n"
     "STATION=1 LOC=0.000 0.000 0.000 TOOL_VECX=-1.000 -2.000 -3.000 \n" SHAPE_LINES},
    {"an unknown turret direction is an empty text", ONE("<TARGET TYPE='Turret' ROT_ABOUT='Z'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Turret STATIONS=0 DIAM=0.000 GAUGEX=0.000 ROT_ABOUT= \n" SHAPE_LINES},
    {"a head",
     ONE("<TARGET TYPE='Vert Head' ROT_4TH_ABOUT='+X' ROT_5TH_ABOUT='-Z' GAUGEX='0.001' GAUGEY='-0.0011' GAUGEZ='3'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Vert Head ROT_5TH_ABOUT=-Z GAUGEY=-0.001 GAUGEZ=3.000 \n" SHAPE_LINES},
    {"every gauge of a head", ONE("<TARGET TYPE='Horiz Head' ROT_5TH_ABOUT='+Y' GAUGEX='1' GAUGEY='-2' GAUGEZ='3'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Horiz Head ROT_5TH_ABOUT=+Y GAUGEX=1.000 GAUGEY=-2.000 GAUGEZ=3.000 "
     "\n" SHAPE_LINES},
    {"every value of a fixture",
     ONE("<TARGET TYPE='Fixture' ID='1' ROT_4TH_ABOUT='-X' ROT_5TH_ABOUT='-Y' XOFF='1' YOFF='2' ZOFF='3' V4X='.1' "
         "V4Y='.2' V4Z='.3' V5X='.4' V5Y='.5' V5Z='.6' BASE_X_5TH_AXIS='7' BASE_Y_5TH_AXIS='8' BASE_Z_5TH_AXIS='9'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Fixture ID=1 ROT_4TH_ABOUT=-X ROT_5TH_ABOUT=-Y XOFF=1.000 YOFF=2.000 "
     "ZOFF=3.000 V4X=0.100 V4Y=0.200 V4Z=0.300 V5X=0.400 V5Y=0.500 V5Z=0.600 BASE_X_5TH_AXIS=7.000 "
     "BASE_Y_5TH_AXIS=8.000 BASE_Z_5TH_AXIS=9.000 \n" SHAPE_LINES},
    {"fixture 2 alone", ONE("<TARGET TYPE='Fixture' ID='2' XOFF='1'/>"), "CHANNELS=1\n" SHAPE_LINES},
    {"two fixtures",
     ONE("<TARGET TYPE='Fixture' ID='2' ROT_5TH_ABOUT='+Y'/><TARGET TYPE='Fixture' ID='1' XOFF='0.0004'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Fixture ID=1 XOFF=0.000 \n"
     "CHANNEL Main ID=1 TARGET=Fixture ID=2 ROT_5TH_ABOUT=+Y \n" SHAPE_LINES},
    {"vectors of axes are left out, 4th axis bases too",
     ONE("<TARGET TYPE='Fixture' ID='1' V4X='0.6' V4Y='0.8' V4Z='0' V5X='1' V5Y='-0.9999' V5Z='0.99989' "
         "BASE_X_4TH_AXIS='5' BASE_Y_5TH_AXIS='-0.0001'/>"),
     "CHANNELS=1\nCHANNEL Main ID=1 TARGET=Fixture ID=1 V4X=0.600 V4Y=0.800 V5Z=1.000 BASE_Y_5TH_AXIS=-0.000 "
     "\n" SHAPE_LINES},
    {"a shape's small values are left out",
     OF_SHAPE("<OFFSET X='0.0005' Y='0.001'/><HOME A='-2'/><MAX X='0.0011' C='1'/>"),
     "CHANNELS=1\n" SHAPE_LINES "HOME A=-2.000 \nMAX X=0.001 MAX C=1.000 \n"},
    {"every component of a shape",
     OF_SHAPE("<OFFSET X='1' Y='2' Z='3'/><HOME X='1' Y='2' Z='3' A='4' B='5' C='6'/>"
              "<MIN X='1' Y='2' Z='3' A='4' B='5' C='6'/><MAX X='1' Y='2' Z='3' A='4' B='5' C='6'/>"),
     "CHANNELS=1\n" SHAPE_LINES "OFFSET X=1.000 OFFSET Y=2.000 OFFSET Z=3.000 \n"
     "HOME X=1.000 HOME Y=2.000 HOME Z=3.000 HOME A=4.000 HOME B=5.000 HOME C=6.000 \n"
     "MIN X=1.000 MIN Y=2.000 MIN Z=3.000 MIN A=4.000 MIN B=5.000 MIN C=6.000 \n"
     "MAX X=1.000 MAX Y=2.000 MAX Z=3.000 MAX A=4.000 MAX B=5.000 MAX C=6.000 \n"},
    {"a shape's flags",
     OF_SHAPE("<DISPLAY TRANSPARENT='TRUE' HOUSING='TRUE' CCHECK='TRUE' VISIBLE='' RGB='1 -2' METALLIC='x'/>"),
     "CHANNELS=1\nSHAPE NAME=S ID=1 PARENT= PTYPE=Fixed TRANSPARENT=TRUE HOUSING=TRUE CCHECK=TRUE VISIBLE=FALSE "
     "RGB(1,-2,0)\nPATH=\n"},
    {"names and paths in UTF-8",
     "<CHANNELS NUM='1'/><SHAPES NUM='1'><SHAPE NAME='T&#252;r \xF0\x9F\x9B\xA0' PATH='a.stl'/></SHAPES>",
     "CHANNELS=1\nSHAPE NAME=T\xC3\xBCr \xF0\x9F\x9B\xA0 ID=0 PARENT= PTYPE=Fixed RGB(128,128,128)\n"
     "PATH=C:\\M\\Mill\\VMC\\a.stl\n"},
    {"lists of one channel",
     LISTS("<CHANNELS NUM='1'><CHANNEL/></CHANNELS>",
           "<FIXTURESHAPELIST ID='3' AXIS='C' NUM='1' LIST='8'/><TOOLSHAPELIST CHANNEL='1' NUM='3' LIST='4,7,9'/>"
           "<TOOLSHAPELIST CHANNEL='2' AXIS='X' NUM='1' LIST='5'/><FIXTURESHAPELIST ID='0' NUM='1' LIST='5'/>"),
     "CHANNELS=1\n" SHAPE_LINES "TOOLSHAPELIST CHANNEL=1 AXIS=Z NUM=3 LIST=4,7,9\n"
     "FIXTURESHAPELIST CHANNEL=1 ID=3 AXIS=C NUM=1 LIST=8\n"},
    {"tools' lists before fixtures', each by row, axis and fixture",
     LISTS(TWO,
           "<FIXTURESHAPELIST ID='2' AXIS='B' NUM='1' LIST='9'/><FIXTURESHAPELIST ID='1' AXIS='B' NUM='1' LIST='8'/>"
           "<FIXTURESHAPELIST ID='3' AXIS='A' NUM='1' LIST='7'/><TOOLSHAPELIST CHANNEL='1' AXIS='X' NUM='1' LIST='6'/>"
           "<TOOLSHAPELIST AXIS='C' NUM='1' LIST='5'/><TOOLSHAPELIST AXIS='Y' NUM='1' LIST='4'/>"),
     "CHANNELS=2\n" SHAPE_LINES "TOOLSHAPELIST CHANNEL=0 AXIS=Y NUM=1 LIST=4\n"
     "TOOLSHAPELIST CHANNEL=0 AXIS=C NUM=1 LIST=5\nTOOLSHAPELIST CHANNEL=1 AXIS=X NUM=1 LIST=6\n"
     "FIXTURESHAPELIST CHANNEL=0 ID=3 AXIS=A NUM=1 LIST=7\nFIXTURESHAPELIST CHANNEL=0 ID=1 AXIS=B NUM=1 LIST=8\n"
     "FIXTURESHAPELIST CHANNEL=0 ID=2 AXIS=B NUM=1 LIST=9\n"},
    {"channels 1 and 2 of two share a row",
     LISTS(TWO,
           "<TOOLSHAPELIST CHANNEL='1' AXIS='X' NUM='1' LIST='4'/><TOOLSHAPELIST CHANNEL='2' AXIS='X' NUM='1' "
           "LIST='5'/><FIXTURESHAPELIST AXIS='?' NUM='2' LIST='6'/><TOOLSHAPELIST CHANNEL='-1' NUM='1' LIST='5'/>"),
     "CHANNELS=2\n" SHAPE_LINES "TOOLSHAPELIST CHANNEL=1 AXIS=X NUM=1 LIST=5\n"
     "FIXTURESHAPELIST CHANNEL=0 ID=1 AXIS=Z NUM=2 LIST=6,6\n"},
    {"a later table replaces the first", LISTS(TWO, "<TOOLSHAPELIST NUM='1' LIST='4'/></SHAPELISTS><SHAPELISTS>"),
     "CHANNELS=2\n" SHAPE_LINES},
    {"lists ahead of channels are lost", "<SHAPELISTS><TOOLSHAPELIST NUM='1' LIST='4'/></SHAPELISTS>" ONE(""),
     "CHANNELS=1\n" SHAPE_LINES},
};

TEST(MachineExport, WritesExactly) {
  for (const auto& [what, definition, text] : kCases) EXPECT_EQ(kvtest::ExportOf(definition), text) << what;
}

TEST(MachineExport, NamesTheParentOfAShape) {
  for (const char* type : {"Fixed", "X", "Y", "Z", "A", "B", "C", "Rear1", "Front1", "Rear2", "Front2", "Head"}) {
    const std::string shape = "<CHANNELS NUM='1'/><SHAPES NUM='1'><SHAPE PTYPE='" + std::string(type) + "'/></SHAPES>";
    EXPECT_NE(kvtest::ExportOf(shape).find(" PTYPE=" + std::string(type) + " "), std::string::npos) << type;
  }
}

TEST(MachineExport, WritesRealsAsPrintfDoes) {
  KVVMMachine machine;
  kvtest::LoadChannel(machine, "<TARGET TYPE='Turret'/>");
  machine.SetNumShapes(1);
  std::mt19937_64 random(kvtest::PrintedSeed());
  for (int i = 0; i < 4000; ++i) {
    double real = std::bit_cast<double>(random());                                 // of any size, and not-a-number
    if (i % 4) real = double(std::int64_t(random() % 4'000'001) - 2'000'000) / 8;  // with many ties
    if (i % 4 > 1) real /= i % 4 == 2 ? 1000 : 2000;
    machine.GetChannel(1)->SetTurretDiam(real);
    std::string text;
    machine.ExportText(text);
    char expected[400];
    std::snprintf(expected, sizeof expected, " DIAM=%.3f ", real);
    EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
  }
}

TEST(MachineExport, OfEachExampleIsItsGoldenText) {
  const std::filesystem::path examples = kvtest::SourceFile("examples/machines"),
                              golden = kvtest::SourceFile("tests/machine/golden");
  for (const auto& [type, name] : {std::pair(VM_MACHINE_MILL, "Vertical850"),
                                   {VM_MACHINE_MILL, "Trunnion500"},
                                   {VM_MACHINE_MILLTURN, "TwinTurret12"}}) {
    const std::string definition = kvtest::ReadFile(examples / TextOf(type) / name / "KestrovaAPT.xml");
    KVVMMachine machine;
    ASSERT_EQ(machine.LoadFromMemory(type, CString(name), _T("M:\\"), definition), 1) << name;
    std::string text;
    ASSERT_EQ(machine.ExportText(text), 1) << name;
    EXPECT_EQ(text, kvtest::ReadFile((golden / name).string() + ".txt")) << name;
  }
}

TEST(MachineExport, StationLinesAreBounded) {
  const std::string text = kvtest::ExportOf(ONE("<TARGET TYPE='Turret' STATIONS='2000000000'><TOOL/></TARGET>"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), KVVMMachine::kMostStationLines + 4);
  EXPECT_NE(text.find("\nSTATION=100000 "), std::string::npos);
  EXPECT_EQ(text.find("\nSTATION=100001 "), std::string::npos);
}

}  // namespace
