// The exit codes of every command, the line on stderr, and the same answers with --json by docs/schemas/.
#include <filesystem>
#include <fstream>

#include "tests/host/json_schema.h"
#include "tests/host/user_shell.h"

namespace {

using namespace kvtest;

struct Row {
  const char* line;
  int exit_code;
  const char* reason;  // start of the line on stderr; empty if there is none
};

constexpr Row kRows[] = {
    {"--version", 0, ""},
    {"-V", 0, ""},
    {"", 2, "a command is missing; kestrova --help lists the commands"},
    {"--versoin", 2, "--versoin is not an option of kestrova; the nearest: --version"},
    {"machin show", 2, "machin is not a command of kestrova; the nearest: machine"},
    {"env doctr", 2, "doctr is not a command of kestrova env; the nearest: doctor"},
    {"document verfy part.kvdoc", 2, "verfy is not a command of kestrova document; the nearest: verify"},
    {"document show part.kvdoc --jsno", 2, "--jsno is not an option of kestrova document show; the nearest: --json"},
    {"document show part.kvdoc more", 2, "more is unexpected; see kestrova document show --help"},
    {"document show", 2, "FILE is required; see kestrova document show --help"},
    {"document show part.kvdoc >/dev/full", 3, "the output is incomplete"},

    {"document new new.kvdoc --nodes 3", 0, ""},
    {"document new part.kvdoc", 3, "part.kvdoc exists; add --force"},
    {"document new no/new.kvdoc", 3, "cannot save no/new.kvdoc: the folder does not exist"},
    {"document new x.kvdoc --units m", 2, "--units: m not in {mm,inch}; see kestrova document new --help"},
    {"document show part.kvdoc", 0, ""},
    {"document show cut.kvdoc", 3, "cannot read cut.kvdoc: it is damaged or truncated"},
    {"document show none.kvdoc", 3, "cannot read none.kvdoc: no such file"},
    {"document dump part.kvdoc", 0, ""},
    {"document dump none.kvdoc", 3, "cannot read none.kvdoc: "},
    {"document history part.kvdoc", 0, ""},
    {"document history none.kvdoc", 3, "cannot read none.kvdoc: "},
    {"document convert part.kvdoc copy.kvdoc", 0, ""},
    {"document convert none.kvdoc other.kvdoc", 3, "cannot read none.kvdoc: "},
    {"document verify part.kvdoc", 0, ""},
    {"document verify cut.kvdoc", 1, ""},
    {"document verify none.kvdoc", 3, "cannot read none.kvdoc: "},
    {"document repair part.kvdoc saved.kvdoc --force", 0, ""},
    {"document repair cut.kvdoc saved.kvdoc --force", 1, ""},
    {"document repair cut.kvdoc part.kvdoc", 3, "part.kvdoc exists; add --force"},

    {"grid show tools.tsv --sort Diameter:desc --hide Tool", 0, ""},
    {"grid show tools.tsv --sort Length", 1, "the table has no column \"Length\""},
    {"grid show tools.tsv --move Tool=0", 2, "Tool=0: write COLUMN=NUMBER, with a number from 1"},
    {"grid show none.tsv", 3, "cannot read none.tsv: no such file"},
    {"grid find tools.tsv MILL", 0, ""},
    {"grid find tools.tsv mill --case --whole", 1, ""},
    {"grid find tools.tsv '(' --regex", 2, "(: the regular expression is not valid"},

    {"help list", 0, ""},
    {"help open 1234", 0, ""},
    {"help open am", 1, "there is no help for am in "},
    {"help open nonsense", 2, "nonsense is no topic: give a context number or one of master, "},

    {"mail check", 0, ""},
    {"mail send --to a@example.com --attach part.kvdoc", 0, ""},
    {"mail send --to a@example.com --attach none.kvdoc", 3, "cannot read none.kvdoc: no such file"},
    {"mail send --to nobody", 2, "--to: \"nobody\" is no mail address"},

    {"message list", 0, ""},
    {"message show Delete? --kind warning-yes-no --silent", 0, ""},
    {"message show", 2, "name a TEXT or a --string"},
    {"message show Delete? --labels Keep", 2, "--labels needs two or three labels"},
    {"message show --string 64999", 1, "the language library has no string 64999"},
    {"message answers answers.txt", 0, ""},
    {"message answers cut.json", 3, "cut.json:1: there is no \" -> \" between the expected text and what to press"},

    {"job run part.kvdoc", 0, ""},
    {"job run part.kvdoc --command fail", 1, ""},
    {"job run part.kvdoc --command dance", 2, "--command: dance not in "},
    {"job run none.kvdoc", 3, "cannot read none.kvdoc: "},

    {"picture part.kvdoc --out part.kvrec --force", 0, ""},
    {"picture part.kvdoc --out part.kvrec", 3, "part.kvrec exists; add --force"},
    {"picture part.kvdoc --out no/x.kvrec", 3, "cannot write no/x.kvrec: the folder does not exist"},
    {"picture part.kvdoc --out no/", 2, "--out no/ is a folder; name a file, such as part.kvrec"},
    {"picture part.kvdoc --out x.kvrec --node 4000000", 1, "no operation of part.kvdoc has the id 4000000"},
    {"picture part.kvdoc", 2, "--out is required; see kestrova picture --help"},
    {"picture part.kvdoc --out x.kvrec --of dance", 2, "--of: dance not in {toolpath,machine,document,pattern}; "},
    {"picture part.kvdoc --out x.png --highlight 4000000", 1, "no operation of part.kvdoc has the id 4000000"},
    {"picture part.kvdoc --out part.png --of document --size 64x64 --force", 0, ""},
    {"picture part.kvdoc --out x.png --of pattern", 1, "part.kvdoc has no feature with a pattern to draw; suppressed"},
    {"picture part.kvdoc --out x.png --of document --node 4000000", 1, "no feature of part.kvdoc has the id 4000000"},
    {"picture part.kvdoc --out x.png --of pattern --highlight 6", 1, "no feature of part.kvdoc has the id 6;"},
    {"picture --out x.png", 2, "FILE is required; see kestrova picture --help"},
    {"picture part.kvdoc --out part.png --size 64x64 --force", 0, ""},
    {"picture part.kvdoc --out part.svg --view top --force", 0, ""},
    {"picture part.kvdoc --out x.png --size 64", 2, "--size \"64\" is not WIDTHxHEIGHT with 64 to 4096 pixels"},
    {"picture part.kvdoc --out x.png --size 4097x64", 2, "--size \"4097x64\" is not WIDTHxHEIGHT"},
    {"picture part.kvdoc --out x.png --eye 1,2", 2, "--eye \"1,2\" is not X,Y,Z with three numbers"},
    {"picture part.kvdoc --out x.png --target 1,2,3", 2, "--target needs --eye"},
    {"picture part.kvdoc --out x.png --eye 1,2,3 --target 1,2,3", 2, "--eye is where --target is"},
    {"picture part.kvdoc --out x.png --by file", 2, "--by file makes a recording or an SVG file"},
    {"picture part.kvdoc --out x.png --by gdi --eye 1,2,3", 2, "--by gdi has neither hidden surfaces nor perspective"},
    {"picture part.kvdoc --out x.kvrec --by opengl", 2, "--by opengl makes a PNG file"},
    {"-V >/dev/null && __EGL_VENDOR_LIBRARY_FILENAMES=/none kestrova picture part.kvdoc --out x.png", 3,
     "cannot draw by OpenGL: EGL has no driver"},
    {"picture part.kvdoc --of machine --out x.png", 3, "part.kvdoc:"},
    {"picture bad/Mill/Cut --of machine --out x.png", 3, "bad/Mill/Cut/KestrovaAPT.xml:1:"},
    {"picture bad/Mill/VMC --of machine --out x.png", 1, "bad/Mill/VMC has no shape with a solid to draw"},
    {"picture bad/Mill/Stl --of machine --out x.png", 3, "bad/Mill/Stl/cut.stl: byte 80: 9 triangles are announced"},
    {"picture replay part.kvrec --out part.png --size 64x64 --force", 0, ""},
    {"picture replay part.kvrec --out x.kvrec", 2, "--out x.kvrec is no image; let its name end in .png or .svg"},
    {"picture replay part.kvdoc --out x.png", 3, "part.kvdoc is no recording of kestrova picture: byte "},
    {"picture replay none.kvrec --out x.png", 3, "cannot read none.kvrec"},
    {"picture replay part.kvrec", 2, "--out is required; see kestrova picture replay --help"},
    {"picture none.kvdoc --out x.kvrec", 3, "cannot read none.kvdoc: "},

    {"pattern add part.kvdoc 7 --kind linear --direction 1,0,0 --spacing 20 --count 5 --force", 0, ""},
    {"pattern add part.kvdoc 7 --kind circular --centre 0,0 --angle 30 --count 9", 3,
     "HostFeature 7 \"Tapped Hole 2\" of "},
    {"pattern add part.kvdoc 8 --kind circular --centre 0,0 --angle 30 --count 9", 3,
     "HostDrilling 8 \"Centre Drill 2"},
    {"pattern add part.kvdoc 7 --kind dance", 2, "--kind: dance not in {linear,circular,polyline}"},
    {"pattern add part.kvdoc 7 --kind linear --force --count 5", 2, "a linear pattern needs --direction; see"},
    {"pattern add part.kvdoc 7 --kind polyline --force --axis 0,0,1", 2, "a polyline pattern has no --axis; see"},
    {"pattern add part.kvdoc 7 --kind polyline --force --points 0,x 9,9 --count 2", 2,
     "--points \"x\" is not a length"},
    {"pattern add part.kvdoc 7 --kind linear --force --direction 1,0,0 --spacing 1 --count 99999999", 2,
     "these options give no pattern: it has 1 to 10000000 instances"},
    {"pattern list part.kvdoc", 0, ""},
    {"pattern list part.kvdoc 7", 0, ""},
    {"pattern list part.kvdoc 5", 1, "HostFeature 5 \"Face 1\" of part.kvdoc has no pattern; kestrova pattern"},
    {"pattern list none.kvdoc", 3, "cannot read none.kvdoc: "},
    {"pattern skip part.kvdoc 7 0,2-3", 0, ""},
    {"pattern skip part.kvdoc 7 5", 2, "there is no instance 5; the last one is 4"},
    {"pattern skip part.kvdoc 4000 1", 1, "no node of part.kvdoc has the id 4000"},
    {"pattern order part.kvdoc 7 --operation 8 --by nearest", 0, ""},
    {"pattern order part.kvdoc 7 --operation 8 --instances 4,1,4", 2, "instance 4 is named twice"},
    {"pattern order part.kvdoc 7 --operation 8", 2, "name one of --instances, --by and --clear"},
    {"pattern order part.kvdoc 7 --operation 6 --clear", 1,
     "HostFeature 7 \"Tapped Hole 2\" of part.kvdoc has no operation"},
    {"pattern order part.kvdoc 7 --operation 9 --clear", 1, "HostDrilling 9 \"Drill 3\" of part.kvdoc has no order"},
    {"pattern rebuild part.kvdoc", 0, ""},
    {"pattern rebuild cut.kvdoc", 3, "cannot read cut.kvdoc: "},

    {"machine list", 0, ""},
    {"machine show --type MillTurn TwinTurret12", 0, ""},
    {"machine check --type MillTurn TwinTurret12", 0, ""},
    {"machine export --type MillTurn TwinTurret12", 0, ""},
    {"machine check --machines bad --type Mill VMC", 1, ""},
    {"machine show --type MillTurn ../x", 2, "NAME \"../x\" is not the name of a machine's folder"},
    {"machine show --type Mill Vertical85", 1, "there is no Mill machine Vertical85 in "},
    {"machine check --machines bad Cut", 1, ""},
    {"machine show --machines bad Cut", 3, "bad/Mill/Cut/KestrovaAPT.xml:1:"},
    {"machine check --schema TwinTurret12", 0, ""},
    {"machine check --schema --machines bad VMC", 1, ""},
    {"machine schema", 0, ""},
    {"machine new --machines bad --type Turn Lathe", 0, ""},
    {"machine new --machines bad --type Turn Lathe", 3, "bad/Turn/Lathe/KestrovaAPT.xml exists; choose another NAME"},
    {"machine new --machines bad --type Mill a:b", 2, "NAME \"a:b\" has a character that a folder's name can't have"},
    {"machine new --machines bad Mine", 2, "machine new needs --type Mill, Turn or MillTurn"},
    {"machine list --machines none", 3, "cannot read the folder of machines none"},
    {"machine export --machines bad --type Mill Cut", 3, "bad/Mill/Cut/KestrovaAPT.xml:1:"},

    {"feedcolors add --process mill 1200 '#FF8000'", 0, ""},
    {"feedcolors show --process mill", 0, ""},
    {"feedcolors color --process mill 950", 0, ""},
    {"feedcolors add --process mill 9 '#FF8000' && kestrova feedcolors remove --process mill 9", 0, ""},
    {"feedcolors remove --process mill 9", 1, "HKCU\\Software\\Zemlor\\Kestrova\\FeedColors\\Mill has no row 9"},
    {"feedcolors add --process mill x '#FF8000'", 2, "FEED \"x\" is not a number"},

    {"settings list", 0, ""},
    {"settings get LineWidth", 0, ""},
    {"settings get LineWidht", 1, "there is no setting LineWidht; the nearest: LineWidth"},
    {"settings set LineWidth 3", 0, ""},
    {"settings set LineWidth thick", 2, "Display/LineWidth takes a whole number"},
    {"settings set Feature 1 --tree document", 2, "the document is missing"},
    {"settings diff mine.json", 1, ""},
    {"settings reset LineWidth", 0, ""},
    {"settings reset LineWidht", 1, "there is no setting LineWidht"},
    {"settings diff mine.json", 0, ""},
    {"settings export other.json", 0, ""},
    {"settings export mine.json", 3, "mine.json exists; add --force"},
    {"settings import mine.json", 0, ""},
    {"settings import cut.json", 3, "cut.json: "},
    {"settings import none.json", 3, "cannot read none.json"},
    {"settings diff none.json", 3, "cannot read none.json"},
    {"settings get Feature --document none.kvdoc", 3, "cannot read none.kvdoc: "},
    {"settings list --document none.kvdoc", 3, "cannot read none.kvdoc: "},
    {"settings reset Feature --document none.kvdoc", 3, "cannot read none.kvdoc: "},

    {"env", 0, ""},
    {"env doctor", 0, ""},
    {"techdb list", 0, ""},
    {"techdb activate 1", 0, ""},
    {"techdb activate 99", 1, "there is no database 99"},
    {"techdb activate x", 2, "Could not convert: number = x"},
    {"techdb test", 0, ""},
    {"techdb tables --count", 0, ""},
    {"techdb query 'SELECT 1'", 0, ""},
    {"techdb query 'DELETE FROM Tools'", 3, "the database is open for reading only"},

    {"reg add 'HKCU\\K' /v X /d 1 /f", 0, ""},
    {"reg add 'HKCU\\K' /v X /d 1", 3, "value X exists; add /f"},
    {"reg add 'HKCU\\K\xFF' /v X /d 1 /f", 2, "the KEY is not UTF-8: HKCU\\K\\xFF"},
    {"reg query 'HKCU\\K' /s", 0, ""},
    {"reg query 'HKCU\\Nothing'", 1, "there is no key HKEY_CURRENT_USER\\Nothing"},
    {"reg query 'HKCU\\K' /v Y", 1, "there is no value Y"},
    {"reg qurey HKCU", 2, "qurey is not a command of kestrova reg; the nearest: query"},
    {"reg export 'HKCU\\K' k.reg", 0, ""},
    {"reg export 'HKCU\\Nothing' n.reg", 1, "there is no key HKEY_CURRENT_USER\\Nothing"},
    {"reg export 'HKCU\\K' k.reg", 3, "k.reg exists; add /y"},
    {"reg import k.reg", 0, ""},
    {"reg import none.reg", 3, "cannot read none.reg"},
    {"reg import cut.json", 3, "cut.json"},
    {"reg delete 'HKCU\\K'", 3, "deleting the key HKEY_CURRENT_USER\\K with everything below it needs /f"},
    {"reg delete 'HKCU\\K' /v Y /f", 1, "there is no value Y"},
    {"reg delete 'HKCU\\K' /f", 0, ""},
    {"reg delete 'HKCU\\K' /f", 1, "there is no key HKEY_CURRENT_USER\\K"},

    {"ini set shop.ini Tool Diameter 12.5", 0, ""},
    {"ini get shop.ini Tool Diameter", 0, ""},
    {"ini list shop.ini", 0, ""},
    {"ini get shop.ini Tool Length", 1, "shop.ini has no key \"Length\" in [Tool]"},
    {"ini set shop.ini Tool Old 1 && kestrova ini remove shop.ini Tool Old", 0, ""},
    {"ini remove shop.ini Tool ''", 2, "KEY: it is empty"},
    {"ini remove shop.ini Tool Old", 1, "shop.ini has no key \"Old\" in [Tool]"},
    {"ini get none.ini Tool Length", 3, "cannot read none.ini: no such file"},
    {"ini list none.ini", 3, "cannot read none.ini: no such file"},
    {"ini set no/shop.ini Tool Length 1", 3, "cannot write no/shop.ini: the folder does not exist"},

    {"log on --type events", 0, ""},
    {"log off --type evnts", 2,
     "--type: evnts not in {plain,deserialize,events,commands,turret,asmturn,function,memory}"},
    {"log off", 0, ""},
    {"log show", 0, ""},
    {"log clear", 0, ""},
    {"analytics show", 0, ""},
    {"analytics clear", 0, ""},
    {"analytics off", 0, ""},
    {"analytics on", 0, ""},
    {"crash list --folder .", 0, ""},
    {"crash list --folder none", 3, "no such folder: none"},
    {"crash clean --folder .", 0, ""},
    {"crash test dance --folder .", 2, "kind: dance not in "},
    {"crash show part-0.txt", 0, ""},
    {"crash show part-0.dmp", 0, ""},
    {"crash show cut.txt", 1, ""},
    {"crash show part.kvdoc", 3,
     "part.kvdoc is neither a crash report, which has a line \"Error type\", nor a minidump"},
    {"crash show none.txt", 3, "cannot read none.txt: no such file"},
    {"crash stack part-0.dmp --thread crashed", 0, ""},
    {"crash stack cut.dmp", 1, ""},
    {"crash stack part-0.dmp --thread 9", 1, "part-0.dmp has no thread 9"},
    {"crash stack part-0.txt", 3, "part-0.txt is no minidump: byte 0: a minidump begins with MDMP"},

    {"completion zsh", 0, ""},
    {"completion tcsh", 2, "SHELL: tcsh not in {bash,zsh,fish}"},
};

class ExitCodes : public testing::Test {
 protected:
  ExitCodes() {
    for (const char* line : {"document new part.kvdoc --nodes 12", "settings export mine.json"})
      EXPECT_EQ(shell_.Run(std::string("kestrova ") + line), Prints("")) << line;
    const std::string whole = ReadFile(shell_.Work() / "part.kvdoc");
    Make("cut.kvdoc", whole.substr(0, whole.size() * 4 / 5));
    Make("cut.json", "{");
    for (const char* file : {"whole", "cut"}) {
      const std::string seeds = "fuzz/seeds/", name = *file == 'c' ? "cut" : "part-0";
      Make(name + ".dmp", ReadFile(SourceFile(seeds + "minidump/" + file)));
      Make(name + ".txt", ReadFile(SourceFile(seeds + "crash_report/" + file)));
    }
    Make("tools.tsv", "Tool\tDiameter\nend mill\t12\ndrill\t8\n");
    Make("answers.txt", "# why\n*: Delete* -> Yes\n");
    Make("bad/Mill/VMC/KestrovaAPT.xml", "<R><SHAPES NUM='0'/><CHANNELS/></R>");
    Make("bad/Mill/Cut/KestrovaAPT.xml", "<R");
    Make("bad/Mill/Stl/KestrovaAPT.xml", "<R><SHAPES NUM='1'><SHAPE NAME='S' ID='1' PATH='cut.stl'/></SHAPES></R>");
    Make("bad/Mill/Stl/cut.stl", std::string(80, ' ') + std::string("\x09\0\0\0", 4));
  }
  void Make(const std::string& file, const std::string& bytes) {
    std::filesystem::create_directories((shell_.Work() / file).parent_path());
    std::ofstream(shell_.Work() / file, std::ios::binary) << bytes;
  }
  // The name of the command's schema, or nothing if it has no --json.
  std::string Schema(const std::string& line) {
    const std::size_t last_command = line.rfind("kestrova ");
    const std::vector<std::string> words =
        WordsOf(last_command == std::string::npos ? line : line.substr(last_command + 9));
    const std::string last = words.empty() || words[0] == "reg" ? "--" : "--js";
    std::string name = words.empty() ? "" : words[0];
    const bool second = words.size() > 1 && (words[1] == "replay" || line == "env doctor");
    const bool alone = (name == "picture" || name == "env") && !second;  // without a subcommand
    if (!alone) name += words.size() > 1 ? '-' + words[1] : "";
    const std::string path = words.size() > 1 && !alone ? words[0] + ' ' + words[1] : words.empty() ? "" : words[0];
    return shell_.Offered(path, last).contains("--json") ? name : "";
  }

  const UserShell shell_;
};

TEST_F(ExitCodes, AreTheSameForAllCommandsAndWithJson) {
  std::set<std::string> applied, offered;
  for (const Row& row : kRows) {
    const RunResult result = shell_.Run(std::string("kestrova ") + row.line);
    EXPECT_EQ(result.exit_code, row.exit_code) << row.line << '\n' << result;
    const std::string line = row.exit_code > 0 && *row.reason ? std::string("kestrova: ") + row.reason : "";
    EXPECT_TRUE(result.err.starts_with(line)) << row.line << '\n' << result;
    EXPECT_TRUE(line.empty() || std::count(result.err.begin(), result.err.end(), '\n') == 1) << result;
    const std::string schema = Schema(row.line);
    if (schema.empty() || std::string_view(row.line).find('>') != std::string::npos) continue;
    const RunResult json = shell_.Run(std::string("kestrova ") + row.line + " --json");
    EXPECT_EQ(json.exit_code, row.exit_code) << row.line << '\n' << json;
    if (line.empty()) {
      EXPECT_EQ(SchemaFault(schema, json.out), "") << row.line;
      applied.insert(schema);
      continue;
    }
    EXPECT_EQ(SchemaFault("error", json.out), "") << row.line;
    const auto error = nlohmann::json::parse(json.out, nullptr, /*allow_exceptions=*/false)["error"];
    EXPECT_EQ(error["code"], row.exit_code) << row.line;
    EXPECT_EQ("kestrova: " + error["message"].get<std::string>() + "\n", json.err) << row.line;
  }
  for (const std::string& command : shell_.Commands())
    if (const std::string schema = Schema(command); !schema.empty()) offered.insert(schema);
  EXPECT_EQ(applied, offered) << "each command with --json has a row with an answer";
}

TEST_F(ExitCodes, AnUnknownOptionIsWrongUsageOfEveryCommand) {
  for (const std::string& command : shell_.Commands()) {
    const RunResult result = shell_.Run("kestrova " + command + " --no-such-option --json");
    EXPECT_EQ(result.exit_code, 2) << command << '\n' << result;
    EXPECT_EQ(SchemaFault("error", result.out), "") << command;
  }
}

}  // namespace
