// kestrova machine, as a user runs it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/host/run_command.h"

namespace {

using kvtest::RunCommand;
using kvtest::RunResult;

constexpr char kGood[] =
    "<R><CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>\n"
    "<SHAPES NUM='1'><SHAPE NAME='Bed' ID='3' PATH='bed.stl'/></SHAPES></R>";

// A folder of machines with one mill, VMC.
class MachineCommand : public testing::Test {
 protected:
  void Write(const std::string& definition) { folder_.Write("Mill/VMC/KestrovaAPT.xml", definition); }
  RunResult Run(const std::string& command, const std::string& name = "VMC") {
    return RunCommand({"machine", command, "--machines", folder_.Path().string(), "--type", "Mill", name});
  }
  std::string File(const char* name) const { return (folder_.Path() / "Mill/VMC" / name).string(); }

  kvtest::ScratchFolder folder_;
};

TEST_F(MachineCommand, ExportsBesideTheDefinition) {
  Write(kGood);
  EXPECT_EQ(Run("export"), (RunResult{0,
                                      File("KestrovaAPT.txt") + "\n1 channel, 0 stations, 0 fixtures, 1 shape, "
                                                                "0 shape lists\n",
                                      ""}));
  const std::string text = kvtest::ReadFile(File("KestrovaAPT.txt"));
  EXPECT_TRUE(text.starts_with("CHANNELS=1\nCHANNEL Main ID=1 TARGET=Head \nSHAPE NAME=Bed ID=3 ")) << text;
}

TEST_F(MachineCommand, ExplainsFailuresInOneLineAndKeepsTheOlderExport) {
  struct Case {
    const char* definition;
    std::string message;
  };
  const std::string file = File("KestrovaAPT.xml");
  const Case kCases[] = {
      {"<R>\n <A></R>", file + ":2:7 (byte 10): start-end tags mismatch"},
      {"<R/>", "nothing to export: " + file + " declares 0 channels (NUM of CHANNELS)"},
      {"<R><CHANNELS NUM='1'><CHANNEL/></CHANNELS></R>",
       "nothing to export: " + file + " declares 0 shapes (NUM of SHAPES)"},
  };
  folder_.Write("Mill/VMC/KestrovaAPT.txt", "older");
  for (const Case& row : kCases) {
    Write(row.definition);
    EXPECT_EQ(Run("export"), (RunResult{1, "", "kestrova: " + row.message + "\n"})) << row.definition;
    EXPECT_EQ(kvtest::ReadFile(File("KestrovaAPT.txt")), "older");
  }
}

TEST_F(MachineCommand, SaysThatThereIsNoDefinition) {
  EXPECT_EQ(Run("show", "Nobody"), (RunResult{1, "",
                                              "kestrova: there is no machine definition " +
                                                  (folder_.Path() / "Mill/Nobody/KestrovaAPT.xml").string() +
                                                  "; see --machines, --type and NAME\n"}));
}

TEST_F(MachineCommand, RefusesWrongUsage) {
  EXPECT_EQ(Run("export", "../VMC"),
            (RunResult{2, "", "kestrova: NAME \"../VMC\" is not the name of a machine's folder\n"}));
  EXPECT_EQ(RunCommand({"machine", "export", "--type", "Mill", "VMC"}).exit_code, 2);
  EXPECT_EQ(RunCommand({"machine", "show", "--machines", ".", "--type", "mill", "VMC"}).exit_code, 2);
  EXPECT_EQ(RunCommand({"machine"}).exit_code, 2);
}

TEST_F(MachineCommand, ShowsATree) {
  Write(
      "<R><CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'><TARGET TYPE='Turret' STATIONS='1' GAUGEX='2'>"
      "<TOOL NAME='Drill' LOC='1 2 3' VECTOR_X='1 0 0'/></TARGET><TARGET TYPE='Fixture' ID='1' XOFF='4'/></CHANNEL>"
      "</CHANNELS><SHAPES NUM='4'><SHAPE NAME='Head' ID='2' PARENT='Bed' PTYPE='Z' PATH='h.stl'/>"
      "<SHAPE NAME='Bed' ID='1' PATH='b.stl'/><SHAPE NAME='P' ID='3' PARENT='Q'/><SHAPE NAME='Q' ID='4' PARENT='P'/>"
      "</SHAPES><SHAPELISTS><TOOLSHAPELIST AXIS='Z' NUM='2' LIST='2,1'/></SHAPELISTS></R>");
  EXPECT_EQ(Run("show"), (RunResult{0,
                                    "VMC (Mill), 1 channel, 1 station, 1 fixture, 4 shapes, 1 shape list\n"
                                    "  channel 1 Main\n"
                                    "    Turret 1, gauge 2 0 0, 1 stations about +Z, diameter 0\n"
                                    "      station 1 Drill: at 1 2 3, X 1 0 0, Z 0 0 1\n"
                                    "    fixture 1, offset 4 0 0\n"
                                    "  shapes\n"
                                    "    1 Bed (Fixed) b.stl\n"
                                    "      2 Head (Z) h.stl\n"
                                    "    3 P (Fixed) \n"
                                    "      4 Q (Fixed) \n"
                                    "  shape lists\n"
                                    "    row 0, tool along Z: 2 1\n",
                                    ""}));
}

TEST_F(MachineCommand, ShowsJson) {
  Write(kGood);
  const RunResult result =
      RunCommand({"machine", "show", "--json", "--machines", folder_.Path().string(), "--type", "Mill", "VMC"});
  ASSERT_EQ(result.exit_code, 0) << result;
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["name"], "VMC");
  EXPECT_EQ(json["channels"][0]["target"], "Head");
  EXPECT_EQ(json["shapes"][0]["id"], 3);
}

TEST_F(MachineCommand, ChecksAndFailsOnErrorsOnly) {
  folder_.Write("Mill/VMC/bed.stl", "solid");
  Write(kGood);
  const std::string file = File("KestrovaAPT.xml");
  EXPECT_EQ(Run("check"), (RunResult{0, file + ": nothing found\n", ""}));
  Write("<R><more/></R>");
  EXPECT_EQ(Run("check"), (RunResult{0,
                                     file + ":1:5: warning: element \"more\" is not known here and is skipped\n"
                                            "0 errors, 1 warnings, 0 notes\n",
                                     ""}));
  Write("<R><SHAPES NUM='0'/><CHANNELS/></R>");
  const RunResult result = Run("check");
  EXPECT_EQ(result.exit_code, 1) << result;
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(result.out.starts_with(file + ":1:22: error: without NUM")) << result;
}

}  // namespace
