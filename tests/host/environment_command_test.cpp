// kestrova env: its output in different installations, and `kestrova env doctor` on installations and registries with
// one fault each.
#include <gmock/gmock.h>

#include <fstream>
#include <functional>

#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "tests/folders.h"
#include "tests/host/scratch_installation.h"

namespace {

namespace fs = std::filesystem;
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
      {"start", "getTreeTabProgID", "QFSWTREETAB.QFSWTreeTabCtrlVS2019.21"},
      {"installation", "getKVModuleName", "KESTROVAu"},
      {"language", "getTechDBLang", 0},
      {"folders", "getKVDataPath", lib_},
      {"folders", "getDefaultSimulationMachineFolderPath", lib_ + "MachSim\\Machines\\"},
      {"technologyDatabase", "getDefaultSQLiteDBPath", lib_ + "TechDB\\TechDB.kvdb"},
      {"product", "getKVVersion", "2024"},
  };
  for (const auto& [group, operation, expected] : rows) EXPECT_EQ(all.at(group).at(operation), expected) << operation;
  EXPECT_TRUE(fs::is_directory(installation_.Lib("SimulationRecordings")));
}

TEST_F(EnvironmentCommand, HelpIsEnglishIfTheLanguageHasNoHelp) {
  KeepText(HKEY_CURRENT_USER, kVersionKey, _T("Language"), "German");
  nlohmann::json all = Json({}).at("installation");
  EXPECT_EQ(all.at("getKVHelpPath"), lib_ + "lang\\English\\");
  EXPECT_EQ(all.at("getKVResourceDllPath"), lib_ + "lang\\German\\KVRESu.DLL");
  EXPECT_EQ(all.at("getTutorialsPath"), lib_ + "lang\\German\\Manuals");
  fs::copy_file(installation_.Lib("lang/German/KVRESu.DLL"), installation_.Lib("lang/German/Milling.chm"));
  fs::remove_all(installation_.Lib("lang/German/Manuals"));
  all = Json({}).at("installation");
  EXPECT_EQ(all.at("getKVHelpPath"), lib_ + "lang\\German\\");
  EXPECT_EQ(all.at("getTutorialsPath"), lib_ + "lang\\English\\Manuals");
}

TEST_F(EnvironmentCommand, EditorIsInTheInstallationOrBesideIt) {
  const auto editor = [&] { return Json({}).at("installation").at("getCIMCOEditorPath"); };
  EXPECT_EQ(editor(), root_ + "\\nceditor\\KestrovaNCEditor.exe") << "kept though there is none";
  fs::create_directory(installation_.Lib("NCEditor"));
  fs::copy_file(installation_.Lib("lang/German/KVRESu.DLL"), installation_.Lib("NCEditor/kestrovanceditor.EXE"));
  EXPECT_EQ(editor(), root_ + "\\lib\\nceditor\\KestrovaNCEditor.exe") << "found in any case, named as ever";
}

TEST_F(EnvironmentCommand, PathIsTheFolderOfTheLoadedLibrary) {
  fs::create_directory_symlink("lib", installation_.Path() / "link");
  const std::pair<const char*, const char*> rows[] = {{"/registry/../lib", "\\lib\\"}, {"/link", "\\link\\"}};
  for (const auto& [folder, expected] : rows) {
    ScratchInstallation::UseLibraryIn(installation_.Path().string() + folder);
    EXPECT_EQ(Json({}).at("installation").at("getKVPath"), root_ + expected) << folder;
  }
}

using Harm = std::function<void(const ScratchInstallation&)>;

// The harm, the grade and subject of the finding, a part of its text and of its remedy.
using Case = std::tuple<Harm, const char*, const char*, const char*, const char*>;

void Keep(LPCTSTR name, const std::string& text) { KeepText(HKEY_CURRENT_USER, kVersionKey, name, text); }
Harm Keeps(LPCTSTR name, const char* text) {
  return [=](const auto&) { Keep(name, text); };
}
Harm Sets(LPCTSTR key, LPCTSTR name, int number) {
  return [=](const auto&) { SetRegSettingDwordValue(HKEY_CURRENT_USER, key, name, number); };
}
// The files are below lib.
Harm Damages(const char* file) {
  return [=](const auto& here) { std::ofstream(here.Lib(file), std::ios::binary) << "MZ, and then nothing"; };
}
Harm Removes(const char* file) {
  return [=](const auto& here) { fs::remove_all(here.Lib(file)); };
}
Harm Copies(const fs::path& from, const char* to) {
  return [=](const auto& here) {
    fs::copy(here.Lib(from), here.Lib(to), fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  };
}
Harm operator+(const Harm& first, const Harm& second) {
  return [=](const auto& here) { first(here), second(here); };
}

const Harm kGerman = Keeps(_T("Language"), "German"), kForms = Keeps(_T("TechDBForms"), "TechDBForms.mde (32bit)");

const Case kCases[] = {
    {Keeps(_T("Language"), "Spanish"), "warning", "language",
     "the chosen language \"Spanish\" has no resource library below", "/v Language /d Automatic /f"},
    {Copies("lang/German", "lang/Greek") + Keeps(_T("Language"), "Greek"), "note", "language",
     "the technology database does not know the language \"Greek\"", "nothing to do"},
    {Damages("lang/English/KVRESu.DLL"), "error", "language",
     "lang/English/KVRESu.DLL is not a readable resource library", "/v Language /d English /f"},
    {Copies(kvtest::SourceFile("fuzz/seeds/resources/languages.dll"), "lang/German/KVRESu.DLL") + kGerman, "warning",
     "language", "texts are missing in", "this release's language library"},
    {Removes("lang/English") + kGerman, "warning", "language", "no English library", "install the English language"},
    {Keeps(_T("KVDataPath"), "/no/folder"), "error", "folders",
     "KVDataPath in the registry, is missing: ", "/v KVDataPath /d"},
    {Keeps(_T("KVDataPath"), "data\\here"), "error", "folders",
     "KVDataPath in the registry, is not a full path: data\\here\\", "/v KVDataPath /d '\\"},
    {Keeps(_T("KVDataPath"), "/proc"), "warning", "folders", "no file can be created in the data folder: /proc",
     "give the user write permission"},
    {Removes("MachSim/Jobs"), "warning", "folders", "SimulationJobPath in the registry, is missing",
     "create it: mkdir -p /"},
    {Removes("MachSim/Machines") +
         [](const auto& here) { fs::create_directories(here.Lib("MachSim/Machines/Mill/Empty")); },
     "warning", "folders", "there is no machine definition below", "Mill/NAME/KestrovaAPT.xml"},
    {Damages("SimulationRecordings"), "warning", "folders", "the folder of recordings cannot be created",
     "write permission"},
    {Removes("TechDB"), "error", "technology database", "there is no technology database: neither ", "install one"},
    {[](const auto& here) { std::ofstream(here.Lib("TechDB/database.config")) << "<c>\n<"; }, "error",
     "technology database", "TechDB/database.config:2: ", "correct the file"},
    {Removes("TechDB/TechDB.kvdb") + [](const auto& here) { fs::create_directory(here.Lib("TechDB/TechDB.kvdb")); },
     "error", "technology database", "TechDB.kvdb is a folder", "in the folder's place"},
    {[](const auto& here) {
       fs::create_directory(here.Path() / "other");
       fs::copy(here.Lib("lang"), here.Path() / "other/lang", fs::copy_options::recursive);
       Keep(_T("KVDataPath"), (here.Path() / "other").string());
     },
     "warning", "folders", "is another installation's: /", "/v KVDataPath /d '\\"},
    {Removes("TechDB/TechDB.kvdb"), "error", "technology database", "the file of the active database is missing",
     "put the file there"},
    {Damages("TechDB/TechDB.kvdb"), "error", "technology database", "not a database", "kestrova techdb activate N"},
    {[](const auto& here) { fs::remove(here.Path() / "etc"); }, "error", "technology database",
     "the ODBC driver \"Kestrova SQLite3 ODBC Driver\" is not registered", "techdb activate N"},
    {kForms, "error", "technology database", "the forms file is missing: ", "/v TechDBForms /d 'TechDB App' /f"},
    {kForms + Damages("lang/English/TechDBForms.mde"), "error", "technology database",
     "the forms file names no database, or cannot be read: ", "TechDBFormsPathTable"},
    {kForms + Copies(kvtest::SourceFile("tests/host/fixtures/TechDBForms.mdb"), "lang/English/TechDBForms.mde"),
     "error", "technology database", "T/DB.mdb", "TechDBFormsPathTable"},
    {Keeps(_T("EurekaExePath"), "C:\\Gone"), "warning", "simulator", "there is no simulator at", "EurekaExePath"},
    {Sets(kVersionDebugKey, _T("GetWIPArcSupport"), 5), "note", "switches", "GetWIPArcSupport is 5; the default is 1",
     "kestrova reg delete 'HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug' /v GetWIPArcSupport /f"},
    {Sets(kProductDebugKey, _T("EnableWIPImprovement"), 0), "note", "switches",
     "EnableWIPImprovement is 0; the default is 1", "Kestrova\\Debug' /v EnableWIPImprovement"},
    {[](const auto&) { KeepText(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableToolBlock"), "yes"); }, "warning",
     "switches", "EnableToolBlock is not a number of 32 bits (REG_DWORD)", "reg delete"},
    {[](const auto& here) { std::ofstream(here.Path() / "registry/user.hive") << std::string(5000, 'x'); }, "error",
     "registry", "user.hive is damaged", "reg import"},
};

// The findings; the command must fail on errors only.
nlohmann::json Doctor() {
  const RunResult result = RunCommand({"env", "doctor", "--json"});
  EXPECT_EQ(result.err, "");
  const auto found = nlohmann::json::parse(result.out, nullptr, /*allow_exceptions=*/false);
  EXPECT_EQ(result.exit_code, found.at("errors") > 0 ? 1 : 0) << found.dump(1);
  return found;
}

TEST(EnvironmentDoctor, FindsNothingWrongWithTheExampleInstallation) {
  const ScratchInstallation installation;
  for (const char* language : {"English", "German", "French"}) {
    Keep(_T("Language"), language);
    const nlohmann::json found = Doctor();
    EXPECT_EQ(found, With(found, {{"errors", 0}, {"warnings", 0}, {"notes", found.at("findings").size()}}));
  }
}

TEST(EnvironmentDoctor, NamesEachFaultAndItsRemedy) {
  for (const auto& [harm, grade, subject, text, remedy] : kCases) {
    const ScratchInstallation installation;
    harm(installation);
    const nlohmann::json found = Doctor();
    int matches = 0;
    for (const nlohmann::json& finding : found.at("findings")) {
      const auto holds = [&](const char* field, const char* part) {
        return finding.at(field).get<std::string>().find(part) != std::string::npos;
      };
      if (finding.at("subject") != subject || !holds("text", text)) continue;
      ++matches;
      EXPECT_EQ(finding.at("grade"), grade) << text;
      EXPECT_TRUE(holds("remedy", remedy)) << text << ": " << finding;
    }
    EXPECT_EQ(matches, 1) << text << ": " << found.dump(1);
  }
}

// A later start from a good place must not find what this one computed.
TEST(EnvironmentDoctor, NamesAPathThatIsTooLongAndSavesNothing) {
  const ScratchInstallation installation;
  const fs::path folder = installation.Path() / std::string(200, 'a') / std::string(100, 'b');
  fs::create_directories(folder.parent_path());
  fs::create_directory_symlink(installation.Lib(""), folder);
  ScratchInstallation::UseLibraryIn(folder.string());
  const nlohmann::json found = Doctor();
  EXPECT_EQ(found.at("findings").size(), 1u) << found.dump(1);
  EXPECT_THAT(found.at("findings")[0].at("text").get<std::string>(),
              testing::EndsWith("characters, and the product can use 259: " + (folder / "libKVSHAREu.so").string()));
  for (const char* hive : {"HKCU", "HKLM"})
    EXPECT_EQ(RunCommand({"reg", "query", std::string(hive) + "\\" + ToUtf8(CString(kVersionKey))}).exit_code, 1)
        << hive;
}

TEST(EnvironmentDoctor, PrintsFindingsWithTheirRemedies) {
  const ScratchInstallation installation;
  SetEnvironmentVariableW(_T("_KVDEBUG"), _T("yes"));
  fs::remove(installation.Lib("lang/English/KVRESu.DLL"));
  const RunResult result = RunCommand({"env", "doctor"});
  SetEnvironmentVariableW(_T("_KVDEBUG"), nullptr);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(result.out.starts_with("install folder      " + installation.Lib("").string() + "\ndata folder         " +
                                     installation.Lib("").string() + "\nuser's registry     " +
                                     (installation.Path() / "registry/user.hive").string() + "\n"))
      << result;
  EXPECT_THAT(result.out,
              testing::HasSubstr("\nerror: language: " + installation.Lib("lang/English/KVRESu.DLL").string() +
                                 " is missing; the product has no texts\n    install the language again, or choose "
                                 "another: kestrova reg add 'HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64' /v "
                                 "Language /d English /f\n"));
  EXPECT_THAT(result.out,
              testing::HasSubstr("\nnote: process: the environment variable _KVDEBUG switches debugging on\n"
                                 "    unset _KVDEBUG\n1 error, 0 warnings, "));
}

}  // namespace
