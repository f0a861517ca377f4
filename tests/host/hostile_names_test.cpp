// Gives each command names that would control the terminal or forge a line, and looks at what it prints.
#include <fmt/format.h>

#include <fstream>

#include "host/document/document_file.h"
#include "share/core/registry_keys.h"
#include "tests/host/document_fixture.h"
#include "tests/host/user_shell.h"

namespace {

using namespace kvtest;

// ESC, BEL, DEL and U+009B; then a line end, as UTF-8 and as XML. The registry, INI files and XML have no other
// controls.
const std::string kOneLine = "H\x1b]0;x\x07\x7f\xC2\x9B\x32J", kHostile = kOneLine + "\nforged\rline";
constexpr char kXml[] = "H&#27;]0;x&#7;&#127;&#155;2J&#10;forged&#13;line";

const std::string kForged = "a forged line";

// The first harmful place of an output; empty if there is none.
std::string Harm(const std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool c1 = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if ((byte < ' ' && byte != '\n') || byte == 0x7F || c1) return fmt::format("byte {}: {:#x}", i, byte);
  }
  if (('\n' + text).find("\nforged") != std::string::npos) return kForged;
  const std::string quoted = nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore);
  return nlohmann::json::parse(quoted) == text ? "" : "not UTF-8";
}

class HostileNames : public DocumentTest {
 protected:
  HostileNames() {
    std::filesystem::current_path(shell_.Work());  // an argument may name a file to write
    const CString label = FromUtf8(kHostile);
    Add<kestrova::HostOperation>(nullptr, label);
    kestrova::SaveDocument(document_, At("a.kvdoc"));
    Make("a.ini", '[' + kOneLine + "]\n" + kOneLine + '=' + kOneLine + '\n');
    Make("bytes.ini", "[a]\n\xFFk=\xFF\n");
    Make(
        "lib/MachSim/Machines/Mill/M/KestrovaAPT.xml",
        fmt::format("<R><CHANNELS NUM='1'><CHANNEL ID='1' NAME='{0}'><TARGET TYPE='Head'/></CHANNEL></CHANNELS><SHAPES "
                    "NUM='1'><SHAPE NAME='{0}' ID='3' PARENT='{0}' PATH='{0}'/></SHAPES></R>",
                    kXml));
    Make("lib/TechDB/database.config",
         fmt::format(
             "<c><applicationSettings><!-- --><setting databaseType='sqlite' Default='True'><filePath>TechDB.kvdb"
             "</filePath><description>{}</description></setting></applicationSettings></c>",
             kXml));
    nlohmann::json value = {{"type", "int"}, {"value", 1}};
    for (const char* field : {"group", "path", "name"}) value[field] = kHostile;
    Make("a.json", nlohmann::json({{"tree", "application"}, {"values", {value}}}).dump());
    KeepText(HKEY_CURRENT_USER, CString(_T("Software\\KvHost\\")) + label, label, kHostile);
    for (LPCTSTR name : {_T("Language"), _T("TechDBPath"), _T("SimulationJobPath"), _T("EurekaExePath")})
      KeepText(HKEY_CURRENT_USER, kVersionKey, name, kHostile);
  }
  ~HostileNames() override { std::filesystem::current_path(before_); }
  std::string At(const std::string& file) const { return (installation_.Path() / file).string(); }
  void Make(const std::string& file, const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(At(file)).parent_path());
    std::ofstream(At(file), std::ios::binary) << bytes;
  }
  static std::string Printed(const std::vector<std::string>& words) {
    const RunResult result = RunCommand(words);
    const std::string harm = Harm(result.out);
    const bool dump =
        words.size() > 1 && words[1] == "dump";  // the library's own text, which keeps the line ends of a label
    EXPECT_TRUE(harm.empty() || (dump && harm == kForged)) << testing::PrintToString(words) << harm << result.out;
    EXPECT_EQ(Harm(result.err), "") << testing::PrintToString(words) << result.err;
    return result.out + result.err;
  }

  const std::filesystem::path before_ = std::filesystem::current_path();
  const UserShell shell_;
  const ScratchInstallation& installation_ = shell_.Installation();
};

TEST_F(HostileNames, DoNotReachTheTerminal) {
  const std::vector<std::string> rows[] = {{"document", "show", At("a.kvdoc")},
                                           {"document", "dump", At("a.kvdoc")},
                                           {"document", "verify", At(kHostile)},
                                           {"job", "run", At("a.kvdoc")},
                                           {"machine", "show", "--type", "Mill", "M"},
                                           {"machine", "check", "--type", "Mill", "M"},
                                           {"ini", "list", At("a.ini")},
                                           {"ini", "get", At("a.ini"), kOneLine, kOneLine},
                                           {"settings", "list"},
                                           {"settings", "get", "TechDBPath"},
                                           {"settings", "set", "TechDBPath", kHostile},
                                           {"settings", "import", At("a.json")},
                                           {"reg", "query", "HKCU\\Software\\KvHost", "/s"},
                                           {"env"},
                                           {"env", "doctor"},
                                           {"techdb", "list"},
                                           {"techdb", "query", "SELECT '" + kOneLine + "' AS \"" + kOneLine + '"'},
                                           {"complete-words", "machine", "show", kHostile}};
  for (const auto& row : rows) {
    const std::string shown = Printed(row);
    EXPECT_TRUE(shown.find("]0;x") != std::string::npos || row[0] == "complete-words") << testing::PrintToString(row);
    std::vector<std::string> json = row;
    json.push_back("--json");
    Printed(json);
  }
  Printed({"ini", "list", At("bytes.ini")});
  Printed({"reg", "query", "HKCU\\Software\\KvHost", "/s", "--json"});
}

TEST_F(HostileNames, InArgumentsDoNotReachTheTerminal) {
  for (const std::string& command : shell_.Commands()) {
    std::vector<std::string> words = WordsOf(command);
    for (const std::string& argument : {kHostile, kHostile + "\xFF", "--" + kHostile}) {
      words.push_back(argument);
      Printed(words);
    }
  }
}

}  // namespace
