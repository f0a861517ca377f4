// kestrova machine, as a user runs it.
#include "tests/host/json_schema.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

constexpr char kGood[] =
    "<KESTROVAAPT><CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'><TARGET TYPE='Head'/></CHANNEL></CHANNELS>\n"
    "<SHAPES NUM='1'><SHAPE NAME='Bed' ID='3' PATH='bed.stl'/></SHAPES></KESTROVAAPT>";

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
  EXPECT_EQ(Json(Words("export")), nlohmann::json::parse(R"({"file": )" + JsonOf(txt_) + R"(, "counts": {"channels": 1,
      "stations": 0, "fixtures": 0, "shapes": 1, "shapeLists": 0}})"));
}

TEST_F(MachineCommand, ExplainsFailuresInOneLineAndKeepsTheOlderExport) {
  const std::pair<const char*, std::string> rows[] = {
      {"<R>\n <A></R>", xml_ + ":2:7 (byte 10): start-end tags mismatch"},
      {"<R><CHANNELS NUM='1'><CHANNEL/></CHANNELS><SHAPES NUM='1'><SHAPE NAME='a&#10;b'/></SHAPES></R>",
       xml_ + ": NAME of shape 0 contains the control character U+000A; nothing was exported, and kestrova machine "
              "check shows the place"},
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
  EXPECT_EQ(Run({"show", "--machines", File("none"), "VMC"}),
            Refused("cannot read the folder of machines " + File("none/") + ": no such file"));
}

TEST_F(MachineCommand, FindsMachinesByName) {
  Write(kGood);
  folder_.Write("MillTurn/TwinTurret/KestrovaAPT.xml", kGood);
  const std::string machines = folder_.Path().string();
  EXPECT_EQ(Out({"list", "--machines", machines}), "Mill     VMC\nMillTurn TwinTurret\n");
  EXPECT_EQ(Json({"list", "--machines", machines, "--type", "Mill"})["machines"],
            nlohmann::json::parse(R"([{"type": "Mill", "name": "VMC", "file": )" + JsonOf(xml_) + "}]"));
  EXPECT_EQ(Run({"show", "--machines", machines, "TwinTuret"}),
            Refused("there is no machine TwinTuret in " + File("") + "; the nearest: TwinTurret", 1));
  EXPECT_TRUE(Out({"show", "--machines", machines, "TwinTurret"}).starts_with("TwinTurret (MillTurn), 1 channel"));
  folder_.Write("Mill/V;x/KestrovaAPT.xml", kGood);  // no shell may run a part of a name
  EXPECT_EQ(RunCommand({"complete-words", "machine", "check", "--machines", machines, ""}),
            Prints("TwinTurret\nVMC\n"));
  folder_.Write("MillTurn/VMC/KestrovaAPT.xml", kGood);
  EXPECT_EQ(Run({"show", "--machines", machines, "VMC"}),
            Refused("Mill and MillTurn machines are named VMC; choose one with --type", 2));
#ifndef _WIN32  // whose names are UTF-16
  folder_.Write("Turn/b\xFF/KestrovaAPT.xml", kGood);
  EXPECT_EQ(Json({"export", "--machines", machines, "b\xFF"})["counts"]["shapes"], 1);
#endif
}

TEST_F(MachineCommand, AnswersByTheSchemas) {
  Write(kGood);
  const std::string machines = folder_.Path().string();
  for (const char* command : {"list", "export", "show", "check"}) {
    std::vector<std::string> words = {command, "--machines", machines, "--json"};
    if (words.front() != "list") words.emplace_back("VMC");
    EXPECT_EQ(SchemaFault(std::string("machine-") + command, Run(words).out), "") << command;
  }
}

TEST_F(MachineCommand, NewMachinesHaveNoFaults) {
  for (const std::string type : {"Mill", "Turn", "MillTurn"}) {
    const std::vector<std::string> machine = {"--machines", folder_.Path().string(), "--type", type, "New"};
    const auto words = [&](std::vector<std::string> command) {
      command.insert(command.end(), machine.begin(), machine.end());
      return command;
    };
    const std::string file = File(type + "/New/KestrovaAPT.xml");
    EXPECT_EQ(Out(words({"new"})), file + "\n");
    EXPECT_EQ(Out(words({"check"})), file + ": nothing found\n");
    EXPECT_EQ(Out(words({"check", "--schema"})), file + ": nothing found\n");
  }
  EXPECT_EQ(Out({"schema"}), ReadFile(File("kestrova-apt.xsd")));
}

TEST_F(MachineCommand, LooksInTheFolderOfTheEnvironment) {
  Write(kGood);
  EXPECT_EQ(RunCommand({"settings", "set", "SimulationMachinePath", folder_.Path().string()}).exit_code, 0);
  EXPECT_EQ(Out({"list"}), "Mill     VMC\n");
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
            "    Turret 1, gauge 2 0 0, 1 station about +Z, diameter 0\n"
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
  Write("<more/>" + std::string(kGood));
  EXPECT_EQ(Run(Words("check")),
            (RunResult{1,
                       xml_ + ":1:9: error: a second root element follows the first (byte 8); nothing is read\n"
                              "1 error, 0 warnings, 0 notes\n",
                       ""}));
  std::vector<std::string> words = Words("check");
  words.emplace_back("--json");
  const RunResult json = Run(words);
  EXPECT_EQ(json.exit_code, 1) << json;
  EXPECT_EQ(nlohmann::json::parse(json.out)["findings"][0]["column"], 9) << json;
  Write(std::string(kGood).insert(std::string(kGood).find("<SHAPES"), "<more/>"));
  EXPECT_EQ(Out(Words("check")),
            xml_ + ":2:2: warning: element \"more\" is not known here and is skipped\n0 errors, 1 warning, 0 notes\n");
}

}  // namespace
