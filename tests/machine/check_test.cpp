// The findings of the check, with grade and place.
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "share/machine/machine_check.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace {

std::string FindingsOf(const std::string& definition, const CString& folder = CString()) {
  std::string text;
  for (const MachineFinding& finding : CheckMachineText(definition, folder).findings) {
    text += std::to_string(finding.place.line) + ":" + std::to_string(finding.place.column) + " " +
            TextOf(finding.grade) + " " + finding.text + "\n";
  }
  return text;
}

struct Case {
  const char* definition;  // the children of the root
  const char* findings;
};

#define CHANNEL(content) "<CHANNELS NUM='1'><CHANNEL ID='1'>" content "</CHANNEL></CHANNELS>"
#define SHAPES(content) "<SHAPES NUM='1'><SHAPE NAME='S' ID='1' PATH='a.stl'>" content "</SHAPE></SHAPES>"
#define LISTS(content) CHANNEL("") "\n" SHAPES("") "\n<SHAPELISTS>" content "</SHAPELISTS>"

const Case kCases[] = {
    {CHANNEL("<TARGET TYPE='Head'/>") SHAPES(""), ""},
    {"<EXTRA/>", "1:5 warning element \"EXTRA\" is not known here and is skipped\n"},
    {"<MACHINE ver='1'/>", "1:13 warning attribute \"ver\" is not known in MACHINE and is skipped: write VER\n"},
    {CHANNEL("<TARGET TYPE='fixture'/>"),
     "1:52 error TYPE=\"fixture\" is not a known kind of target and is read as none\n"},
    {CHANNEL("<TARGET TYPE='Head' GAUGEX='1,5'/>"),
     "1:66 warning GAUGEX=\"1,5\" is read as 1.5: the comma is read as a decimal point\n"},
    {CHANNEL("<TARGET TYPE='Head' GAUGEX='250000' GAUGEY='1mm' GAUGEZ='x'/>"),
     "1:66 error GAUGEX=\"250000\" is out of range and is read as 100000\n"
     "1:82 warning GAUGEY=\"1mm\" is read as 1: the text after the number is ignored\n"
     "1:95 error GAUGEZ=\"x\" is not a number and is read as 0\n"},
    {CHANNEL("<TARGET TYPE='Head' ROT_ABOUT='Z' ID='1' ID='2'/>"),
     "1:69 error ROT_ABOUT=\"Z\" is not a known direction and is read as none\n"
     "1:79 error attribute \"ID\" occurs twice: the first one is used\n"},
    {CHANNEL("<TARGET TYPE='Fixture' ID='2'/>"), "1:39 error fixture 2 without fixture 1 is never exported\n"},
    {CHANNEL("<TARGET TYPE='Fixture' ID='3'/>"), "1:65 error fixture 3 is out of range: the IDs are 1 and 2\n"},
    {CHANNEL("<TARGET TYPE='Fixture' ID='1' DIAM='3'/>"), "1:68 warning DIAM of a fixture is set on the tool target\n"},
    {CHANNEL("<TARGET TYPE='Head' XOFF='3'/>"), "1:58 warning XOFF of a tool target is set on fixture 1\n"},
    {CHANNEL("<TARGET TYPE='Turret' STATIONS='2'><TOOL POS='1' LOC='1,5 0 0'/><TOOL POS='1'/></TARGET>"),
     "1:35 error the turret has 2 stations, but TOOL elements for 1 (from 1 to 1)\n"
     "1:92 error LOC=\"1,5 0 0\" has 1 of three numbers; the others are read as 0\n"
     "1:113 error station 1 has a TOOL already; the first one is used\n"},
    {"<CHANNELS NUM='2'><CHANNEL ID='1'/><CHANNEL ID='1'/><CHANNEL ID='3'/></CHANNELS>",
     "1:19 error CHANNELS declares 2 and contains 3\n"
     "1:52 error channel 1 is never found: line 1 has that number already\n"
     "1:69 error channel 3 is never exported: its number is outside 0 to 2\n"},
    {"<CHANNELS/>", "1:5 error without NUM the channel count of the machine loaded before remains, or 0\n"},
    {"<SHAPES NUM='3'><SHAPE ID='1' PATH='a'/>\n<SHAPE ID='1' PARENT='P' PTYPE='U' PATH='a'/></SHAPES>",
     "1:17 warning SHAPES declares 3 and contains 2\n"
     "2:12 error shape ID 1 is used in line 1 already; only that shape is found\n"
     "2:23 warning parent \"P\" is not a shape\n"
     "2:33 error PTYPE=\"U\" is not a known kind of parent and is read as Fixed\n"},
    {SHAPES("<DISPLAY VISIBLE='no' RGB='1 2 256'/>"),
     "1:74 warning VISIBLE=\"no\" is neither TRUE nor FALSE and is read as FALSE\n"
     "1:83 warning RGB=\"1 2 256\": 256 is not a colour value from 0 to 255\n"},
    {"<SHAPELISTS><TOOLSHAPELIST NUM='1' LIST='1'/></SHAPELISTS>" CHANNEL("") SHAPES(""),
     "1:5 error SHAPELISTS before CHANNELS: all its lists are ignored\n"},
    {LISTS("<TOOLSHAPELIST NUM='3' LIST='1,2'/>"),
     "3:33 error NUM is 3 and LIST has 2: the last one is repeated\n"
     "3:42 error LIST names shape 2, which does not exist\n"},
    {LISTS("<TOOLSHAPELIST NUM='1' LIST='1,1'/>"), "3:33 error NUM is 1 and LIST has 2: 1 are used\n"},
    {LISTS("<TOOLSHAPELIST LIST='1'/>"),
     "3:14 error the list stores nothing: it needs a LIST and a NUM of 1 or more\n"},
    {LISTS("<TOOLSHAPELIST NUM='1' LIST='1' CHANNEL='2'/>"),
     "3:54 error channel 2 is outside the table of 1 rows: the list is ignored\n"},
    {LISTS("<TOOLSHAPELIST NUM='1' LIST='1'/>\n<TOOLSHAPELIST NUM='1' LIST='1' CHANNEL='1'/>"),
     "4:2 error replaces the list of line 3: both are for row 0, axis Z\n"},
    {LISTS("<FIXTURESHAPELIST ID='0' NUM='1' LIST='1'/><FIXTURESHAPELIST ID='3' NUM='1' LIST='1'/>"),
     "3:35 error fixture 0 is out of range: the list is ignored\n"
     "3:78 warning no channel has a fixture 3\n"},
};

TEST(MachineCheck, ReportsWhatTheReaderSkipsOrCorrects) {
  for (const Case& row : kCases)
    EXPECT_EQ(FindingsOf(std::string("<R>") + row.definition + "</R>"), row.findings) << row.definition;
}

TEST(MachineCheck, LooksForGeometryFiles) {
  const kvtest::ScratchFolder folder;
  folder.Write("Sub/Body.stl", "solid");
  const CString path(ProductPathFromSystem(folder.Path().string() + "/").c_str());
  const auto findings = [&](const std::string& file) {
    return FindingsOf("<R><SHAPES NUM='1'><SHAPE ID='1' PATH='" + file + "'/></SHAPES></R>", path);
  };
  EXPECT_EQ(findings("Sub/Body.stl"), "");
  EXPECT_EQ(findings("Sub\\Body.stl"), "");
  EXPECT_EQ(findings("sub\\body.STL"),
            "1:40 note geometry file \"sub\\body.STL\" exists as \"Body.stl\": upper and lower case differ\n");
  EXPECT_EQ(findings("Sub"), "1:40 error geometry file \"Sub\" does not exist\n");
  EXPECT_EQ(findings(""), "1:40 error SHAPE without a geometry file: its PATH is the machine's folder\n");
}

TEST(MachineCheck, FindsNothingInTheExamples) {
  for (const char* machine : {"Mill/Vertical850", "Mill/Trunnion500", "MillTurn/TwinTurret12"}) {
    const std::string file = (kvtest::SourceFile("examples/machines") / machine / "KestrovaAPT.xml").string();
    const MachineCheckResult result = CheckMachineFile(ProductPathFromSystem(file).c_str());
    EXPECT_EQ(result.failure.kind, KVXMLFailure::Kind::kNone) << result.failure.reason;
    for (const MachineFinding& finding : result.findings) ADD_FAILURE() << machine << ": " << finding.text;
  }
}

TEST(MachineCheck, FindingsAreBounded) {
  std::string definition = "<R>";
  for (std::size_t i = 0; i < kMachineMostFindings + 5; ++i) definition += "<x/>";
  const MachineCheckResult result = CheckMachineText(definition + "</R>", CString());
  EXPECT_EQ(result.findings.size(), kMachineMostFindings);
  EXPECT_TRUE(result.more);
}

}  // namespace
