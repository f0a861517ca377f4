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

using Case = std::pair<const char*, const char*>;  // the children of the root, the findings

#define CHANNEL(content) "<CHANNELS NUM='1'><CHANNEL ID='1'>" content "</CHANNEL></CHANNELS>"
#define HEAD "<TARGET TYPE='Head'/>"
#define SHAPES(content) "<SHAPES NUM='1'><SHAPE NAME='S' ID='1' PATH='a.stl'>" content "</SHAPE></SHAPES>"
#define LISTS(content) CHANNEL(HEAD) "\n" SHAPES("") "\n<SHAPELISTS>" content "</SHAPELISTS>"

const Case kCases[] = {
    {CHANNEL("<TARGET TYPE='Head'/>") SHAPES(""), ""},
    {"<EXTRA/>", "2:2 warning element \"EXTRA\" is not known here and is skipped\n"},
    {"<MACHINE ver='1'/>", "2:10 warning attribute \"ver\" is not known in MACHINE and is skipped: write VER\n"},
    {CHANNEL("<TARGET TYPE='fixture'/>"),
     "2:32 error a channel without a tool target and a fixture is never exported\n"
     "2:49 error TYPE=\"fixture\" is not a known kind of target and is read as none\n"},
    {CHANNEL("<TARGET TYPE='Head' GAUGEX='1,5'/>"),
     "2:63 warning GAUGEX=\"1,5\" is read as 1.5: the comma is read as a decimal point\n"},
    {CHANNEL("<TARGET TYPE='Head' GAUGEX='250000' GAUGEY='1mm' GAUGEZ='x'/>"),
     "2:63 error GAUGEX=\"250000\" is out of range and is read as 100000\n"
     "2:79 warning GAUGEY=\"1mm\" is read as 1: the text after the number is ignored\n"
     "2:92 error GAUGEZ=\"x\" is not a number and is read as 0\n"},
    {CHANNEL("<TARGET TYPE='Head' ROT_ABOUT='Z' ID='1' ID='2'/>"),
     "2:66 error ROT_ABOUT=\"Z\" is not a known direction and is read as none\n"
     "2:76 error attribute \"ID\" occurs twice: the first one is used\n"},
    {CHANNEL("<TARGET TYPE='Fixture' ID='2'/>"), "2:36 error fixture 2 without fixture 1 is never exported\n"},
    {CHANNEL("<TARGET TYPE='Fixture' ID='3'/>"),
     "2:32 error a channel without a tool target and a fixture is never exported\n"
     "2:62 error fixture 3 is out of range: the IDs are 1 and 2\n"},
    {CHANNEL("<TARGET TYPE='Fixture' ID='1' DIAM='3'/>"), "2:65 warning DIAM of a fixture is set on the tool target\n"},
    {CHANNEL("<TARGET TYPE='Head' XOFF='3'/>"), "2:55 warning XOFF of a tool target is set on fixture 1\n"},
    {CHANNEL("<TARGET TYPE='Turret' STATIONS='2'><TOOL POS='1' LOC='1,5 0 0'/><TOOL POS='1'/></TARGET>"),
     "2:32 error the turret has 2 stations, but TOOL elements for 1 (from 1 to 1)\n"
     "2:89 error LOC=\"1,5 0 0\" has 1 of three numbers; the others are read as 0\n"
     "2:110 error station 1 has a TOOL already; the first one is used\n"},
    {"<CHANNELS NUM='2'><CHANNEL ID='1'>" HEAD "</CHANNEL><CHANNEL ID='1'>" HEAD "</CHANNEL><CHANNEL ID='3'>" HEAD
     "</CHANNEL></CHANNELS>",
     "2:16 error CHANNELS declares 2 and contains 3\n"
     "2:79 error channel 1 is never found: line 2 has that number already\n"
     "2:126 error channel 3 is never exported: its number is outside 0 to 2\n"},
    {"<CHANNELS/>", "2:2 error without NUM the channel count of the machine loaded before remains, or 0\n"},
    {"<SHAPES NUM='3'><SHAPE ID='1' PATH='a'/>\n<SHAPE ID='1' PARENT='P' PTYPE='U' PATH='a'/></SHAPES>",
     "2:14 warning SHAPES declares 3 and contains 2\n"
     "3:12 error shape ID 1 is used in line 2 already; only that shape is found\n"
     "3:23 error parent \"P\" is not a shape\n"
     "3:33 error PTYPE=\"U\" is not a known kind of parent and is read as Fixed\n"},
    {SHAPES("<DISPLAY VISIBLE='no' RGB='1 2 256'/>"),
     "2:71 warning VISIBLE=\"no\" is neither TRUE nor FALSE and is read as FALSE\n"
     "2:80 warning RGB=\"1 2 256\": 256 is not a colour value from 0 to 255\n"},
    {"<SHAPELISTS><TOOLSHAPELIST NUM='1' LIST='1'/></SHAPELISTS>" CHANNEL(HEAD) SHAPES(""),
     "2:2 error SHAPELISTS before CHANNELS: all its lists are ignored\n"},
    {"<SHAPES NUM='2'><SHAPE NAME='A&#10;ID=2' ID='1' PATH='../a' PARENT='B'/><SHAPE NAME='B' ID='2' PATH='C:\\b' "
     "PARENT='A&#10;ID=2'/></SHAPES>",
     "2:30 error NAME=\"A ID=2\" contains the control character U+000A, which breaks the export's lines\n"
     "2:55 error geometry file \"../a\" is outside the machine's folder\n"
     "2:69 error shape \"A ID=2\" is its own parent, directly or through other shapes\n"
     "2:102 error geometry file \"C:\\b\" is outside the machine's folder\n"
     "2:116 error PARENT=\"A ID=2\" contains the control character U+000A, which breaks the export's lines\n"},
    {SHAPES("<MIN X='3' Y='-1'/><MAX X='2' Y='1'/><HOME Y='2'/><DISPLAY METALLIC='Steel'/>"),
     "2:61 error MIN X is 3, above MAX X, which is 2\n"
     "2:99 warning HOME Y is 2, outside of -1 to 1\n"
     "2:112 note METALLIC of DISPLAY is not part of the export (1 time)\n"},
    {CHANNEL("<TARGET TYPE='Rail'><TOOL NAME='a=&#155;' POS='1'/></TARGET>"),
     "2:32 warning TOOL elements of a channel without a turret are not exported\n"
     "2:49 warning the export writes no line end after the target Rail: the next record continues its line\n"
     "2:61 note NAME of TOOL is not part of the export (1 time)\n"
     "2:67 error NAME=\"a= \" contains the control character U+009B\n"},
    {LISTS("<TOOLSHAPELIST NUM='3' LIST='1,2'/>"),
     "4:33 error NUM is 3 and LIST has 2: the last one is repeated\n"
     "4:42 error LIST names shape 2, which does not exist\n"},
    {LISTS("<TOOLSHAPELIST NUM='1' LIST='1,1'/>"), "4:33 error NUM is 1 and LIST has 2: 1 are used\n"},
    {LISTS("<TOOLSHAPELIST LIST='1'/>"),
     "4:14 error the list stores nothing: it needs a LIST and a NUM of 1 or more\n"},
    {LISTS("<TOOLSHAPELIST NUM='1' LIST='1' CHANNEL='2'/>"),
     "4:54 error channel 2 is outside the table of 1 rows: the list is ignored\n"},
    {LISTS("<TOOLSHAPELIST NUM='1' LIST='1'/>\n<TOOLSHAPELIST NUM='1' LIST='1' CHANNEL='1'/>"),
     "5:2 error replaces the list of line 4: both are for row 0, axis Z\n"},
    {LISTS("<FIXTURESHAPELIST ID='0' NUM='1' LIST='1'/><FIXTURESHAPELIST ID='3' NUM='1' LIST='1'/>"),
     "4:35 error fixture 0 is out of range: the list is ignored\n"
     "4:78 warning no channel has a fixture 3\n"},
};

// The definition stands in its own lines from line 2 on. Missing sections follow, so that they cause no findings.
std::string Definition(std::string children) {
  if (children.find("<CHANNELS") == children.npos) children += "\n" CHANNEL(HEAD);
  if (children.find("<SHAPES") == children.npos) children += "\n" SHAPES("");
  return "<KESTROVAAPT>\n" + children + "</KESTROVAAPT>";
}

TEST(MachineCheck, ReportsWhatTheReaderSkipsOrCorrects) {
  for (const auto& [children, findings] : kCases) EXPECT_EQ(FindingsOf(Definition(children)), findings) << children;
}

TEST(MachineCheck, ReportsWhatIsNeverExported) {
  const Case kDefinitions[] = {
      {"<html/>",
       "1:2 warning the root element is \"html\" and not KESTROVAAPT\n"
       "1:2 error there is no CHANNELS: nothing is exported\n1:2 error there is no SHAPES: nothing is exported\n"},
      {"<KESTROVAAPT><CHANNELS NUM='0'/><SHAPES NUM='0'/></KESTROVAAPT>",
       "1:29 error CHANNELS declares 0: nothing is exported\n1:46 error SHAPES declares 0: nothing is exported\n"},
      {"x<KestrovaAPT>" CHANNEL(HEAD) SHAPES("") "</KestrovaAPT>",
       "1:1 error text outside the root element is ignored\n"},
  };
  for (const auto& [definition, findings] : kDefinitions) EXPECT_EQ(FindingsOf(definition), findings) << definition;
}

TEST(MachineCheck, LooksForGeometryFiles) {
  const kvtest::ScratchFolder folder;
  folder.Write("Sub/Body.stl", "solid");
  const CString path(ProductPathFromSystem(folder.Path().string() + "/").c_str());
  const auto findings = [&](const std::string& file) {
    return FindingsOf(Definition("<SHAPES NUM='1'><SHAPE ID='1' PATH='" + file + "'/></SHAPES>\n"), path);
  };
  EXPECT_EQ(findings("Sub/Body.stl"), "");
  EXPECT_EQ(findings("Sub\\Body.stl"), "");
  EXPECT_EQ(findings("sub\\body.STL"),
            "2:37 note geometry file \"sub\\body.STL\" exists as \"Body.stl\": upper and lower case differ\n");
  EXPECT_EQ(findings("Sub"), "2:37 error geometry file \"Sub\" does not exist\n");
  EXPECT_EQ(findings(""), "2:37 error SHAPE without a geometry file: its PATH is the machine's folder\n");
#ifdef __linux__  // elsewhere making a link needs a privilege
  const kvtest::ScratchFolder other;
  const std::string outside = std::filesystem::canonical(other.Write("Body.stl", "solid")).string();
  std::filesystem::create_symlink(outside, folder.Path() / "link.stl");
  EXPECT_EQ(findings("link.stl"),
            "2:37 warning geometry file \"link.stl\" is outside the machine's folder, by a symbolic link: \"" +
                outside + "\"\n");
#endif
}

TEST(MachineCheck, FindsNoFaultInTheExamples) {
  for (const char* machine : {"Mill/Vertical850", "Mill/Trunnion500", "MillTurn/TwinTurret12"}) {
    const std::string file = (kvtest::SourceFile("examples/machines") / machine / "KestrovaAPT.xml").string();
    const MachineCheckResult result = CheckMachineFile(ProductPathFromSystem(file).c_str());
    EXPECT_EQ(result.failure.kind, KVXMLFailure::Kind::kNone) << result.failure.reason;
    for (const MachineFinding& finding : result.findings)
      EXPECT_EQ(finding.grade, MachineFindingGrade::kNote) << machine << ": " << finding.text;
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
