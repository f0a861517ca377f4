// `kestrova env doctor` on installations and registries with one fault each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "tests/host/run_command.h"
#include "tests/host/scratch_installation.h"

namespace {

namespace fs = std::filesystem;
using kvtest::RunCommand;
using kvtest::RunResult;
using kvtest::ScratchInstallation;

struct Case {
  const char* name;
  std::function<void(const ScratchInstallation&)> harm;
  const char* grade;
  const char* subject;
  const char* text;    // part of the text
  const char* remedy;  // part of the remedy
};

void Keep(LPCTSTR name, const std::string& text) { kvtest::KeepText(HKEY_CURRENT_USER, kVersionKey, name, text); }
void Overwrite(const fs::path& file) { std::ofstream(file, std::ios::binary) << "MZ, and then nothing"; }

const Case kCases[] = {
    {"language that is not installed", [](const auto&) { Keep(_T("Language"), "Spanish"); }, "warning", "language",
     "the chosen language \"Spanish\" has no resource library below", "/v Language /d Automatic /f"},
    {"language without a number",
     [](const auto& here) {
       fs::copy(here.Lib("lang/German"), here.Lib("lang/Greek"));
       Keep(_T("Language"), "Greek");
     },
     "note", "language", "the technology database does not know the language \"Greek\"", "nothing to do"},
    {"library damaged", [](const auto& here) { Overwrite(here.Lib("lang/English/KVRESu.DLL")); }, "error", "language",
     "lang/English/KVRESu.DLL is not a readable resource library", "/v Language /d English /f"},
    {"library of another release",
     [](const auto& here) {
       fs::copy_file(KV_SOURCE_DIR "/fuzz/seeds/resources/languages.dll", here.Lib("lang/German/KVRESu.DLL"),
                     fs::copy_options::overwrite_existing);
       Keep(_T("Language"), "German");
     },
     "warning", "language", "texts are missing in", "this release's language library"},
    {"no English to fall back to",
     [](const auto& here) {
       fs::remove_all(here.Lib("lang/English"));
       Keep(_T("Language"), "German");
     },
     "warning", "language", "no English library", "install the English language"},
    {"data folder missing", [](const auto& here) { Keep(_T("KVDataPath"), (here.Path() / "gone").string()); }, "error",
     "folders", "KVDataPath in the registry, is missing: ", "/v KVDataPath /d"},
    {"data folder relative", [](const auto&) { Keep(_T("KVDataPath"), "data\\here"); }, "error", "folders",
     "KVDataPath in the registry, is not a full path: data\\here\\", "set a full path"},
    {"data folder closed", [](const auto&) { Keep(_T("KVDataPath"), "/proc"); }, "warning", "folders",
     "no file can be created in the data folder: /proc", "give the user write permission"},
    {"jobs missing", [](const auto& here) { fs::remove_all(here.Lib("MachSim/Jobs")); }, "warning", "folders",
     "SimulationJobPath in the registry, is missing", "create it"},
    {"no machines",
     [](const auto& here) {
       fs::remove_all(here.Lib("MachSim/Machines"));
       fs::create_directories(here.Lib("MachSim/Machines/Mill/Empty"));
     },
     "warning", "folders", "there is no machine definition below", "Mill/NAME/KestrovaAPT.xml"},
    {"recordings blocked", [](const auto& here) { Overwrite(here.Lib("SimulationRecordings")); }, "warning", "folders",
     "the folder of recordings cannot be created", "write permission"},
    {"no database", [](const auto& here) { fs::remove_all(here.Lib("TechDB")); }, "error", "technology database",
     "no database is active", "TechDB/TechDB.kvdb there"},
    {"database missing", [](const auto& here) { fs::remove(here.Lib("TechDB/TechDB.kvdb")); }, "error",
     "technology database", "the file of the active database is missing", "put the file there"},
    {"database damaged", [](const auto& here) { Overwrite(here.Lib("TechDB/TechDB.kvdb")); }, "error",
     "technology database", "not a database", "kestrova techdb activate N"},
    {"driver missing", [](const auto& here) { fs::remove(here.Path() / "etc"); }, "error", "technology database",
     "the ODBC driver \"Kestrova SQLite3 ODBC Driver\" is not registered", "techdb activate N"},
    {"forms file missing", [](const auto&) { Keep(_T("TechDBForms"), "TechDBForms.mde (32bit)"); }, "error",
     "technology database", "the forms file is missing: ", "/v TechDBForms /d 'TechDB App' /f"},
    {"forms file damaged",
     [](const auto& here) {
       Keep(_T("TechDBForms"), "TechDBForms.mde (32bit)");
       Overwrite(here.Lib("lang/English/TechDBForms.mde"));
     },
     "error", "technology database", "the forms file names no database, or cannot be read: ", "TechDBFormsPathTable"},
    {"database of the forms missing",
     [](const auto& here) {
       Keep(_T("TechDBForms"), "TechDBForms.mde (32bit)");
       fs::copy_file(KV_TEST_FILES "/fixtures/TechDBForms.mdb", here.Lib("lang/English/TechDBForms.mde"));
     },
     "error", "technology database", "there is no database file D:\\T\\DB.mdb", "put it there"},
    {"simulator gone", [](const auto&) { Keep(_T("EurekaExePath"), "C:\\Gone"); }, "warning", "simulator",
     "there is no simulator at", "EurekaExePath"},
    {"switch set",
     [](const auto&) { SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("GetWIPArcSupport"), 5); },
     "note", "switches", "GetWIPArcSupport is 5; the default is 1",
     "kestrova reg delete 'HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug' /v GetWIPArcSupport /f"},
    {"switch that survives upgrades",
     [](const auto&) { SetRegSettingDwordValue(HKEY_CURRENT_USER, kProductDebugKey, _T("EnableWIPImprovement"), 0); },
     "note", "switches", "EnableWIPImprovement is 0; the default is 1", "Kestrova\\Debug' /v EnableWIPImprovement"},
    {"switch of a wrong type",
     [](const auto&) { kvtest::KeepText(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableToolBlock"), "yes"); },
     "warning", "switches", "EnableToolBlock is not a number of 32 bits (REG_DWORD)", "reg delete"},
    {"damaged registry",
     [](const auto& here) { std::ofstream(here.Path() / "registry/user.hive") << std::string(5000, 'x'); }, "error",
     "registry", "user.hive is damaged", "reg import"},
};

nlohmann::json Doctor(int& exitCode) {
  const RunResult result = RunCommand({"env", "doctor", "--json"});
  exitCode = result.exit_code;
  EXPECT_EQ(result.err, "");
  return nlohmann::json::parse(result.out, nullptr, /*allow_exceptions=*/false);
}

}  // namespace

TEST(EnvironmentDoctor, FindsNothingWrongWithTheExampleInstallation) {
  const ScratchInstallation installation;
  for (const char* language : {"English", "German", "French"}) {
    Keep(_T("Language"), language);
    int exitCode = -1;
    const nlohmann::json found = Doctor(exitCode);
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(found.at("errors"), 0) << found.dump(1);
    EXPECT_EQ(found.at("warnings"), 0) << found.dump(1);
    EXPECT_EQ(found.at("notes"), found.at("findings").size());
  }
}

TEST(EnvironmentDoctor, NamesEachFaultAndItsRemedy) {
  for (const Case& row : kCases) {
    const ScratchInstallation installation;
    row.harm(installation);
    int exitCode = -1;
    const nlohmann::json found = Doctor(exitCode);
    int matches = 0;
    for (const nlohmann::json& finding : found.at("findings")) {
      const auto holds = [&](const char* field, const char* part) {
        return finding.at(field).get<std::string>().find(part) != std::string::npos;
      };
      if (finding.at("subject") != row.subject || !holds("text", row.text)) continue;
      ++matches;
      EXPECT_EQ(finding.at("grade"), row.grade) << row.name;
      EXPECT_TRUE(holds("remedy", row.remedy)) << row.name << ": " << finding;
    }
    EXPECT_EQ(matches, 1) << row.name << ": " << found.dump(1);
    EXPECT_EQ(exitCode, found.at("errors") > 0 ? 1 : 0) << row.name << ": " << found.dump(1);
  }
}

TEST(EnvironmentDoctor, PrintsFindingsWithTheirRemedies) {
  const ScratchInstallation installation;
  SetEnvironmentVariableW(_T("_KVDEBUG"), _T("yes"));
  fs::remove(installation.Lib("lang/English/KVRESu.DLL"));
  const RunResult result = RunCommand({"env", "doctor"});
  SetEnvironmentVariableW(_T("_KVDEBUG"), nullptr);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(
      result.out.starts_with("error: language: " + installation.Lib("lang/English/KVRESu.DLL").string() +
                             " is missing; the product has no texts\n    install the language again, or choose "
                             "another: kestrova reg add 'HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64' /v "
                             "Language /d English /f\n"))
      << result;
  EXPECT_THAT(result.out,
              testing::HasSubstr("\nnote: process: the environment variable _KVDEBUG switches debugging on\n"
                                 "    unset _KVDEBUG\n1 error, 0 warnings, "));
}
