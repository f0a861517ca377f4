// kestrova env: its output, in different installations.
#include <gmock/gmock.h>

#include "share/core/registry_keys.h"
#include "tests/host/scratch_installation.h"

namespace {

using namespace kvtest;

class EnvironmentCommand : public CommandTest {
 protected:
  EnvironmentCommand() : CommandTest("env") {}

  const ScratchInstallation installation_;
  const std::string root_ = ScratchInstallation::Product(installation_.Path().string()), lib_ = root_ + "\\lib\\";
};

TEST_F(EnvironmentCommand, StartsTheModuleAndWritesSwitchesBack) {
  const std::string debugKey = "HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug";
  EXPECT_EQ(RunCommand({"reg", "query", debugKey}).exit_code, 1) << "other commands start nothing";
  const std::string out = Out({});
  EXPECT_TRUE(out.starts_with("Init result 0: started without a fault\n\nStart\n")) << out;
  EXPECT_THAT(out, testing::ContainsRegex("\n  GetKVPath  +[^\n]*\\\\lib\\\\\n"));
  EXPECT_THAT(out, testing::ContainsRegex("\n  GetXMLSetUpSheetPath  +\\(empty\\)\n"));
  EXPECT_THAT(RunCommand({"reg", "query", debugKey}).out, testing::HasSubstr("PostingPerformanceImprovements"));
}

TEST_F(EnvironmentCommand, JsonHasEveryGroupByItsOperations) {
  const nlohmann::json all = Json({});
  EXPECT_EQ(all.at("initResult"), nlohmann::json({{"value", 0}, {"text", "started without a fault"}}));
  const std::tuple<const char*, const char*, nlohmann::json> rows[] = {
      {"start", "GetTreeTabProgID", "QFSWTREETAB.QFSWTreeTabCtrlVS2019.21"},
      {"installation", "GetKVModuleName", "KESTROVAu"},
      {"language", "GetTechDBLang", 0},
      {"folders", "GetKVDataPath", lib_},
      {"folders", "GetDefaultSimulationMachineFolderPath", lib_ + "MachSim\\Machines\\"},
      {"technologyDatabase", "GetDefaultSQLiteDBPath", lib_ + "TechDB\\TechDB.kvdb"},
      {"product", "GetKVVersion", "2024"},
  };
  for (const auto& [group, operation, expected] : rows) EXPECT_EQ(all.at(group).at(operation), expected) << operation;
  EXPECT_TRUE(std::filesystem::is_directory(installation_.Lib("SimulationRecordings")));
}

TEST_F(EnvironmentCommand, HelpIsEnglishIfTheLanguageHasNoHelp) {
  KeepText(HKEY_CURRENT_USER, kVersionKey, _T("Language"), "German");
  nlohmann::json all = Json({}).at("installation");
  EXPECT_EQ(all.at("GetKVHelpPath"), lib_ + "lang\\English\\");
  EXPECT_EQ(all.at("GetKVResourceDllPath"), lib_ + "lang\\German\\KVRESu.DLL");
  EXPECT_EQ(all.at("GetTutorialsPath"), lib_ + "lang\\German\\Manuals");
  std::filesystem::copy_file(installation_.Lib("lang/German/KVRESu.DLL"), installation_.Lib("lang/German/Milling.chm"));
  std::filesystem::remove_all(installation_.Lib("lang/German/Manuals"));
  all = Json({}).at("installation");
  EXPECT_EQ(all.at("GetKVHelpPath"), lib_ + "lang\\German\\");
  EXPECT_EQ(all.at("GetTutorialsPath"), lib_ + "lang\\English\\Manuals");
}

TEST_F(EnvironmentCommand, EditorIsInTheInstallationOrBesideIt) {
  const auto editor = [&] { return Json({}).at("installation").at("GetCIMCOEditorPath"); };
  EXPECT_EQ(editor(), root_ + "\\nceditor\\KestrovaNCEditor.exe") << "kept though there is none";
  std::filesystem::create_directory(installation_.Lib("NCEditor"));
  std::filesystem::copy_file(installation_.Lib("lang/German/KVRESu.DLL"),
                             installation_.Lib("NCEditor/kestrovanceditor.EXE"));
  EXPECT_EQ(editor(), root_ + "\\lib\\nceditor\\KestrovaNCEditor.exe") << "found in any case, named as ever";
}

TEST_F(EnvironmentCommand, PathIsTheFolderOfTheLoadedLibrary) {
  std::filesystem::create_directory_symlink("lib", installation_.Path() / "link");
  const std::pair<const char*, const char*> rows[] = {{"/registry/../lib", "\\lib\\"}, {"/link", "\\link\\"}};
  for (const auto& [folder, expected] : rows) {
    ScratchInstallation::UseLibraryIn(installation_.Path().string() + folder);
    EXPECT_EQ(Json({}).at("installation").at("GetKVPath"), root_ + expected) << folder;
  }
}

}  // namespace
