// kestrova machine, as a user runs it.
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

constexpr char kGood[] =
    "<R><CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>\n"
    "<SHAPES NUM='1'><SHAPE NAME='Bed' ID='3' PATH='bed.stl'/></SHAPES></R>";

// A folder of machines with one mill, VMC.
class MachineCommand : public CommandTest {
 protected:
  MachineCommand() : CommandTest("machine") {}
  void Write(const std::string& definition) { folder_.Write("Mill/VMC/KestrovaAPT.xml", definition); }
  std::vector<std::string> Words(const std::string& command, const std::string& name = "VMC") const {
    return {command, "--machines", folder_.Path().string(), "--type", "Mill", name};
  }

  const std::string xml_ = File("Mill/VMC/KestrovaAPT.xml"), txt_ = File("Mill/VMC/KestrovaAPT.txt");
};

TEST_F(MachineCommand, ExportsBesideTheDefinition) {
  Write(kGood);
  EXPECT_EQ(Out(Words("export")), txt_ + "\n1 channel, 0 stations, 0 fixtures, 1 shape, 0 shape lists\n");
  const std::string text = ReadFile(txt_);
  EXPECT_TRUE(text.starts_with("CHANNELS=1\nCHANNEL Main ID=1 TARGET=Head \nSHAPE NAME=Bed ID=3 ")) << text;
}

TEST_F(MachineCommand, ExplainsFailuresInOneLineAndKeepsTheOlderExport) {
  const std::pair<const char*, std::string> rows[] = {
      {"<R>\n <A></R>", xml_ + ":2:7 (byte 10): start-end tags mismatch"},
      {"<R/>", "nothing to export: " + xml_ + " declares 0 channels (NUM of CHANNELS)"},
      {"<R><CHANNELS NUM='1'><CHANNEL/></CHANNELS></R>",
       "nothing to export: " + xml_ + " declares 0 shapes (NUM of SHAPES)"},
  };
  folder_.Write("Mill/VMC/KestrovaAPT.txt", "older");
  for (const auto& [definition, reason] : rows) {
    Write(definition);
    EXPECT_EQ(Run(Words("export")), Refused(reason)) << definition;
    EXPECT_EQ(ReadFile(txt_), "older");
  }
  EXPECT_EQ(Run(Words("show", "Nobody")),
            Refused("there is no machine definition " + File("Mill/Nobody/KestrovaAPT.xml") +
                    "; see --machines, --type and NAME"));
}

TEST_F(MachineCommand, ShowsATree) {
  Write(
      "<R><CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'><TARGET TYPE='Turret' STATIONS='1' GAUGEX='2'>"
      "<TOOL NAME='Drill' LOC='1 2 3' VECTOR_X='1 0 0'/></TARGET><TARGET TYPE='Fixture' ID='1' XOFF='4'/></CHANNEL>"
      "</CHANNELS><SHAPES NUM='4'><SHAPE NAME='Head' ID='2' PARENT='Bed' PTYPE='Z' PATH='h.stl'/>"
      "<SHAPE NAME='Bed' ID='1' PATH='b.stl'/><SHAPE NAME='P' ID='3' PARENT='Q'/><SHAPE NAME='Q' ID='4' PARENT='P'/>"
      "</SHAPES><SHAPELISTS><TOOLSHAPELIST AXIS='Z' NUM='2' LIST='2,1'/></SHAPELISTS></R>");
  EXPECT_EQ(Out(Words("show")),
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
            "    row 0, tool along Z: 2 1\n");
  const nlohmann::json json = Json(Words("show"));
  EXPECT_EQ(json["name"], "VMC");
  EXPECT_EQ(json["channels"][0]["target"], "Turret");
  EXPECT_EQ(json["shapes"][0]["id"], 2);
}

TEST_F(MachineCommand, ChecksAndFailsOnErrorsOnly) {
  folder_.Write("Mill/VMC/bed.stl", "solid");
  Write(kGood);
  EXPECT_EQ(Out(Words("check")), xml_ + ": nothing found\n");
  Write("<R><more/></R>");
  EXPECT_EQ(Out(Words("check")),
            xml_ + ":1:5: warning: element \"more\" is not known here and is skipped\n0 errors, 1 warnings, 0 notes\n");
  Write("<R><SHAPES NUM='0'/><CHANNELS/></R>");
  const RunResult result = Run(Words("check"));
  EXPECT_EQ(result.exit_code, 1) << result;
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(result.out.starts_with(xml_ + ":1:22: error: without NUM")) << result;
}

}  // namespace
