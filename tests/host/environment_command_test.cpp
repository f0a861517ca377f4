// kestrova env: its output, in different installations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "share/core/registry_keys.h"
#include "tests/host/run_command.h"
#include "tests/host/scratch_installation.h"

namespace {

using kvtest::RunCommand;
using kvtest::RunResult;
using kvtest::ScratchInstallation;

nlohmann::json Environment() {
  const RunResult result = RunCommand({"env", "--json"});
  EXPECT_EQ(result.exit_code, 0) << result;
  EXPECT_EQ(result.err, "");
  return nlohmann::json::parse(result.out, nullptr, /*allow_exceptions=*/false);
}

void ChooseLanguage(const char* name) { kvtest::KeepText(HKEY_CURRENT_USER, kVersionKey, _T("Language"), name); }

}  // namespace

TEST(EnvironmentCommand, StartsTheModuleAndWritesSwitchesBack) {
  const ScratchInstallation installation;
  const std::string debugKey = "HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug";
  EXPECT_EQ(RunCommand({"reg", "query", debugKey}).exit_code, 1) << "other commands start nothing";
  const RunResult result = RunCommand({"env"});
  EXPECT_EQ(result.exit_code, 0) << result;
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(result.out.starts_with("Init result 0: started without a fault\n\nStart\n")) << result;
  EXPECT_THAT(result.out, testing::ContainsRegex("\n  GetKVPath  +[^\n]*\\\\lib\\\\\n"));
  EXPECT_THAT(result.out, testing::ContainsRegex("\n  GetXMLSetUpSheetPath  +\\(empty\\)\n"));
  EXPECT_THAT(RunCommand({"reg", "query", debugKey}).out, testing::HasSubstr("PostingPerformanceImprovements"));
}

TEST(EnvironmentCommand, JsonHasEveryGroupByItsOperations) {
  const ScratchInstallation installation;
  const nlohmann::json all = Environment();
  EXPECT_EQ(all.at("initResult"), nlohmann::json({{"value", 0}, {"text", "started without a fault"}}));
  const std::string install = ScratchInstallation::Product(installation.Lib("").string());
  const std::tuple<const char*, const char*, nlohmann::json> rows[] = {
      {"start", "GetTreeTabProgID", "QFSWTREETAB.QFSWTreeTabCtrlVS2019.21"},
      {"installation", "GetKVModuleName", "KESTROVAu"},
      {"language", "GetTechDBLang", 0},
      {"folders", "GetKVDataPath", install},
      {"folders", "GetDefaultSimulationMachineFolderPath", install + "MachSim\\Machines\\"},
      {"technologyDatabase", "GetDefaultSQLiteDBPath", install + "TechDB\\TechDB.kvdb"},
      {"product", "GetKVVersion", "2024"},
  };
  for (const auto& [group, operation, expected] : rows) EXPECT_EQ(all.at(group).at(operation), expected) << operation;
  EXPECT_TRUE(std::filesystem::is_directory(installation.Lib("SimulationRecordings")));
}

TEST(EnvironmentCommand, HelpIsEnglishIfTheLanguageHasNoHelp) {
  const ScratchInstallation installation;
  ChooseLanguage("German");
  const std::string install = ScratchInstallation::Product(installation.Lib("").string());
  nlohmann::json all = Environment().at("installation");
  EXPECT_EQ(all.at("GetKVHelpPath"), install + "lang\\English\\");
  EXPECT_EQ(all.at("GetKVResourceDllPath"), install + "lang\\German\\KVRESu.DLL");
  EXPECT_EQ(all.at("GetTutorialsPath"), install + "lang\\German\\Manuals");
  std::filesystem::copy_file(installation.Lib("lang/German/KVRESu.DLL"), installation.Lib("lang/German/Milling.chm"));
  std::filesystem::remove_all(installation.Lib("lang/German/Manuals"));
  all = Environment().at("installation");
  EXPECT_EQ(all.at("GetKVHelpPath"), install + "lang\\German\\");
  EXPECT_EQ(all.at("GetTutorialsPath"), install + "lang\\English\\Manuals");
}

TEST(EnvironmentCommand, EditorIsInTheInstallationOrBesideIt) {
  const ScratchInstallation installation;
  const auto editor = [] { return Environment().at("installation").at("GetCIMCOEditorPath"); };
  const std::string root = ScratchInstallation::Product(installation.Path().string());
  EXPECT_EQ(editor(), root + "\\nceditor\\KestrovaNCEditor.exe") << "kept though there is none";
  std::filesystem::create_directory(installation.Lib("NCEditor"));
  std::filesystem::copy_file(installation.Lib("lang/German/KVRESu.DLL"),
                             installation.Lib("NCEditor/kestrovanceditor.EXE"));
  EXPECT_EQ(editor(), root + "\\lib\\nceditor\\KestrovaNCEditor.exe") << "found in any case, named as ever";
}

TEST(EnvironmentCommand, PathIsTheFolderOfTheLoadedLibrary) {
  const ScratchInstallation installation;
  std::filesystem::create_directory_symlink("lib", installation.Path() / "link");
  const std::string root = ScratchInstallation::Product(installation.Path().string());
  const std::pair<std::string, std::string> rows[] = {
      {installation.Path().string() + "/registry/../lib", root + "\\lib\\"},
      {installation.Path().string() + "/link", root + "\\link\\"},
  };
  for (const auto& [folder, expected] : rows) {
    ScratchInstallation::UseLibraryIn(folder);
    EXPECT_EQ(Environment().at("installation").at("GetKVPath"), expected) << folder;
  }
}
