// kestrova settings, as a user runs it.
#include "share/core/registry_keys.h"
#include "tests/golden_settings.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

constexpr LPCTSTR kDisplay = _T("Software\\Zemlor\\Kestrova\\Display");

class SettingsCommand : public CommandTest {
 protected:
  SettingsCommand() : CommandTest("settings") { SetEnvironmentVariableW(_T("TZ"), _T("UTC")); }
};

TEST_F(SettingsCommand, ListsBothTreesAsTheyAreDeclared) {
  SetEnvironmentVariableW(_T("TMPDIR"), _T("/tmp"));  // the golden defaults name it
  for (const std::string tree : {"application", "document"}) {
    nlohmann::json golden = GoldenSettings(tree);
    nlohmann::json listed = Json({"list", "--tree", tree});
    ASSERT_EQ(listed["values"].size(), golden["values"].size());
    // The start of the environment sets folders, so only the defaults are compared.
    for (nlohmann::json* all : {&golden, &listed})
      for (nlohmann::json& row : (*all)["values"]) row.erase("value");
    EXPECT_EQ(listed, golden);
  }
}

TEST_F(SettingsCommand, SetsGetsAndResetsInTheRegistry) {
  EXPECT_EQ(Out({"set", "LineWidth", "5"}), "Display/LineWidth: 2 -> 5\n");
  EXPECT_EQ(Get(HKEY_CURRENT_USER, kDisplay, _T("LineWidth")), (Stored{REG_DWORD, Raw(5)}));
  EXPECT_EQ(Out({"get", "LineWidth"}), "Display/LineWidth = 5  (default 2)\n");
  EXPECT_EQ(Json({"get", "QFDisplaySettings/LineWidth"}),
            nlohmann::json::parse(R"({"group": "QFDisplaySettings", "path": "Software\\Zemlor\\Kestrova\\Display",
                                      "name": "LineWidth", "type": "int", "value": 5, "default": 2})"));
  EXPECT_EQ(Out({"reset", "LineWidth"}), "Display/LineWidth: 5 -> 2\n");
  EXPECT_EQ(Number(Key(HKEY_CURRENT_USER, kDisplay), _T("LineWidth")), -ERROR_FILE_NOT_FOUND);
}

TEST_F(SettingsCommand, TakesEveryTypeAndRefusesOthers) {
  // Null if the text is refused.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"ThreadNum", "0x10", "16"},
      {"ThreadNum", "2147483648", nullptr},
      {"ThreadNum", "", nullptr},
      {"DiaFrom", "1e-3", "0.001"},
      {"TechDBPath", "C:\\Ä b", "\"C:\\Ä b\""},
      {"TechDBPath", "a\n\x1B[1m", "\"a  [1m\""},  // no control characters for the terminal
      {"ToolBarLocation", "-20,143", "-20,143"},
      {"ThreadDlgRect", "1,2,,4", nullptr},
      {"LastCheckTime", "4294967295", "4294967295 (2106-02-07 06:28:15)"},
      {"LastCheckTime", "4294967296", nullptr},
      {"ToolbarButtons", "0,1,", nullptr},
  };
  for (const auto& [name, text, taken] : rows) {
    const RunResult result = Run({"set", name, "--", text});
    EXPECT_EQ(result.exit_code, taken ? 0 : 2) << name << ' ' << text << '\n' << result;
    const std::string shown = taken ? std::string(" -> ") + taken + "\n" : " takes ";
    EXPECT_NE((taken ? result.out : result.err).find(shown), std::string::npos) << shown << result;
  }
}

TEST_F(SettingsCommand, UnknownNamesAreRefusedWithTheNearest) {
  EXPECT_EQ(Run({"get", "linewidht"}), Refused("there is no setting linewidht; the nearest: LineWidth", 1));
  EXPECT_EQ(Run({"reset", "qqqqqqqq"}), Refused("there is no setting qqqqqqqq; see kestrova settings list", 1));
}

TEST_F(SettingsCommand, ChangeOfANameThatIsDeclaredTwiceLasts) {
  const std::string fresh = Out({"export", "-"});  // has both defaults, 1 and 3
  EXPECT_EQ(Out({"set", "StockDispType", "9"}), "Display/StockDispType: 3 -> 9\n");
  EXPECT_EQ(Out({"get", "StockDispType", "--value"}), "9\n");
  const std::string nine = Out({"export", "-"});
  const auto import = [](const std::string& text) { return RunCommand({"settings", "import", "-"}, text); };
  EXPECT_EQ(import(fresh), Prints("1 of 678 values changed\n"));
  EXPECT_EQ(Out({"get", "StockDispType"}), "Display/StockDispType = 3\n");
  EXPECT_EQ(import(nine), Prints("1 of 678 values changed\n"));
  EXPECT_EQ(Json({"reset", "StockDispType"})["before"], 9);
  EXPECT_EQ(Out({"get", "StockDispType"}), "Display/StockDispType = 3\n");
  nlohmann::json two = nlohmann::json::parse(nine);
  for (nlohmann::json& row : two["values"])
    if (row["name"] == "StockDispType") row["value"] = row["default"] == 1 ? 5 : 6;
  EXPECT_EQ(import(two.dump()), Refused("-: Display/StockDispType is declared twice, but the registry has one value; "
                                        "give it one in both rows"));
}

TEST_F(SettingsCommand, DocumentSettingsAreInTheFile) {
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "3"});
  EXPECT_EQ(Out({"set", "Feature", "#0102FF", "--document", file}), "Colors/Feature: #00FF00 -> #0102FF\n");
  EXPECT_EQ(Out({"list", "--changed", "--document", file}),
            "Colors  QFColorSettings  Software\\Zemlor\\Kestrova\\Colors\n"
            "  Feature                                  #0102FF  (default #00FF00)\n");
  EXPECT_EQ(Json({"get", "Feature", "--document", file})["value"], 0xFF0201);
  Out({"reset", "Feature", "--document", file});
  EXPECT_EQ(Out({"list", "--changed", "--document", file}), "");
}

TEST_F(SettingsCommand, ExportIsComparedAndImported) {
  const std::string file = File("all.json");
  Out({"set", "TechDBPath", "D:\\x"});
  Out({"export", file});
  EXPECT_EQ(Run({"export", file}), Refused(file + " exists; add --force to replace it"));
  EXPECT_EQ(Out({"diff", file}), "");
  Out({"set", "TechDBPath", "D:\\y"});
  EXPECT_EQ(Run({"diff", file}), (RunResult{1, "Application/TechDBPath: \"D:\\y\", in the file \"D:\\x\"\n", ""}));
  const auto differences = nlohmann::json::parse(Run({"diff", file, "--json"}).out)["differences"];
  ASSERT_EQ(differences.size(), 1u);
  EXPECT_EQ(differences[0]["file"], "D:\\x");
  EXPECT_EQ(Out({"import", file}), "1 of 678 values changed\n");
  EXPECT_EQ(Out({"diff", file}), "");
}

TEST_F(SettingsCommand, ImportIsCheckedBeforeTheFirstChange) {
  Out({"set", "ThreadNum", "8"});
  const std::string good =
      R"({"group":"QFAppSettings","path":"Software\\Zemlor\\Kestrova\\Kestrova 2024x64","name":"ThreadNum",)"
      R"("type":"int","value":9})";
  const auto with = [&](const std::string& from, const std::string& to) {
    std::string row = good;
    return row.replace(row.find(from), from.size(), to);
  };
  const auto whole = [&](const std::string& rows) { return R"({"tree":"application","values":[)" + rows + "]}"; };
  const std::pair<std::string, std::string> rows[] = {
      {"{", "byte 2: not valid JSON"},
      {"[1]", "it is not an export of settings: \"tree\" and \"values\" are missing"},
      {std::string(10, '[') + std::string(10, ']'), "it is not an export of settings: it is nested too deeply"},
      {R"({"tree":"document","values":[]})",
       "it contains document settings, not application settings; see --tree and --document"},
      {whole(good + ",7"), "value 1 has no \"group\""},
      {whole(good + ',' + good), "value 1: QFAppSettings ThreadNum is listed too often"},
      {whole(good + ',' + with("ThreadNum", "ThredMulti")),
       "value 1: there is no setting QFAppSettings/ThredMulti; the nearest: Application/ThreadMulti"},
      {whole(with("Kestrova 2024x64", "Else")),
       "value 0: QFAppSettings ThreadNum is stored in Software\\Zemlor\\Kestrova\\Kestrova 2024x64, not in "
       "Software\\Zemlor\\Kestrova\\Else"},
      {whole(with("\"int\"", "\"double\"")), "value 0: Application/ThreadNum has the type int"},
      {whole(with("9", "9.5")), "value 0: Application/ThreadNum takes a whole number of 32 bits"},
      {whole(with("9", "1e999")), "a number is larger than any setting takes"},
  };
  for (const auto& [text, reason] : rows) {
    const std::string file = folder_.Write("in.json", text).string();
    EXPECT_EQ(Run({"import", file}), Refused(file + ": " + reason));
    EXPECT_EQ(Get(HKEY_CURRENT_USER, kVersionKey, _T("ThreadNum")), (Stored{REG_DWORD, Raw(8)}));
  }
}

TEST_F(SettingsCommand, NamesAreCompleted) {
  const auto completed = [](std::vector<std::string> words) {
    words.insert(words.begin(), {"complete-words", "settings"});
    return RunCommand(words).out;
  };
  EXPECT_EQ(completed({"get", "LineW"}), "") << "nothing is written for a completion";
  Out({"get", "LineWidth"});
  EXPECT_EQ(completed({"get", "LineW"}), "LineWidth\n");
  EXPECT_EQ(completed({"set", "--document", "a.kvdoc", "SeqH"}), "SeqHoleFeat\n");
}

}  // namespace
