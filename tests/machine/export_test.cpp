// The export's rules one by one, as exact text.
#include <gtest/gtest.h>

#include "tests/machine/definition.h"

namespace {

struct Case {
  const char* what;
  const char* definition;
  const char* text;
};

// A shape and its two lines, so that there is something to export.
#define SHAPE "<SHAPES NUM='1'><SHAPE NAME='S' ID='1'/></SHAPES>"
#define SHAPE_LINES "SHAPE NAME=S ID=1 PARENT= PTYPE=Fixed RGB(128,128,128)\nPATH=\n"
#define ONE(content) "<CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'>" content "</CHANNEL></CHANNELS>" SHAPE
#define OF_SHAPE(content) "<CHANNELS NUM='1'/><SHAPES NUM='1'><SHAPE NAME='S' ID='1'>" content "</SHAPE></SHAPES>"
#define LISTS(channels, lists) channels SHAPE "<SHAPELISTS>" lists "</SHAPELISTS>"
#define TWO "<CHANNELS NUM='2'><CHANNEL ID='1'/><CHANNEL ID='2'/></CHANNELS>"

const Case kCases[] = {
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
     "TYPE='Head'/></CHANNEL>"
     "<CHANNEL ID='2' NAME='c'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>" SHAPE,
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
    {"a shape's flags",
     OF_SHAPE("<DISPLAY TRANSPARENT='TRUE' HOUSING='TRUE' CCHECK='TRUE' VISIBLE='' RGB='1 -2' METALLIC='x'/>"),
     "CHANNELS=1\nSHAPE NAME=S ID=1 PARENT= PTYPE=Fixed TRANSPARENT=TRUE HOUSING=TRUE CCHECK=TRUE VISIBLE=FALSE "
     "RGB(1,-2,0)\nPATH=\n"},
    {"lists of one channel",
     LISTS("<CHANNELS NUM='1'><CHANNEL/></CHANNELS>",
           "<FIXTURESHAPELIST ID='3' AXIS='C' NUM='1' LIST='8'/><TOOLSHAPELIST CHANNEL='1' NUM='3' LIST='4,7,9'/>"
           "<TOOLSHAPELIST CHANNEL='2' AXIS='X' NUM='1' LIST='5'/><FIXTURESHAPELIST ID='0' NUM='1' LIST='5'/>"),
     "CHANNELS=1\n" SHAPE_LINES "TOOLSHAPELIST CHANNEL=1 AXIS=Z NUM=3 LIST=4,7,9\n"
     "FIXTURESHAPELIST CHANNEL=1 ID=3 AXIS=C NUM=1 LIST=8\n"},
    {"channels 1 and 2 of two share a row",
     LISTS(
         TWO,
         "<TOOLSHAPELIST CHANNEL='1' AXIS='X' NUM='1' LIST='4'/><TOOLSHAPELIST CHANNEL='2' AXIS='X' NUM='1' LIST='5'/>"
         "<FIXTURESHAPELIST AXIS='?' NUM='2' LIST='6'/><TOOLSHAPELIST CHANNEL='-1' NUM='1' LIST='5'/>"),
     "CHANNELS=2\n" SHAPE_LINES "TOOLSHAPELIST CHANNEL=1 AXIS=X NUM=1 LIST=5\n"
     "FIXTURESHAPELIST CHANNEL=0 ID=1 AXIS=Z NUM=2 LIST=6,6\n"},
    {"a later table replaces the first", LISTS(TWO, "<TOOLSHAPELIST NUM='1' LIST='4'/></SHAPELISTS><SHAPELISTS>"),
     "CHANNELS=2\n" SHAPE_LINES},
    {"lists ahead of channels are lost", "<SHAPELISTS><TOOLSHAPELIST NUM='1' LIST='4'/></SHAPELISTS>" ONE(""),
     "CHANNELS=1\n" SHAPE_LINES},
};

TEST(MachineExport, WritesExactly) {
  for (const Case& row : kCases) {
    std::string text = kvtest::ExportOf(row.definition);
    EXPECT_EQ(text, row.text) << row.what;
  }
}

TEST(MachineExport, StationLinesAreBounded) {
  const std::string text = kvtest::ExportOf(ONE("<TARGET TYPE='Turret' STATIONS='2000000000'><TOOL/></TARGET>"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), KVVMMachine::kMostStationLines + 4);
  EXPECT_NE(text.find("\nSTATION=100000 "), std::string::npos);
  EXPECT_EQ(text.find("\nSTATION=100001 "), std::string::npos);
}

TEST(MachineExport, WritesUtf8) {
  EXPECT_EQ(kvtest::ExportOf(
                "<CHANNELS NUM='1'/><SHAPES NUM='1'><SHAPE NAME='T&#252;r \xF0\x9F\x9B\xA0' PATH='a.stl'/></SHAPES>"),
            "CHANNELS=1\nSHAPE NAME=T\xC3\xBCr \xF0\x9F\x9B\xA0 ID=0 PARENT= PTYPE=Fixed RGB(128,128,128)\n"
            "PATH=C:\\M\\Mill\\VMC\\a.stl\n");
}

}  // namespace
